#include "foundation/Messages.h"

#include "foundation/Globals.h"
#include "foundation/Translate.h"

#include <cstdio>
#include <utility>

namespace vmk
{
namespace
{
// Without screens (the command-line tool) a notice goes to standard error and a
// question is answered "no", the answer that changes nothing.
int answerOnConsole(const QString& text, int kind)
{
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
    return kind == 0 ? 0 : 7;
}

MessageAnswerer& answererSlot()
{
    static MessageAnswerer answerer = answerOnConsole;
    return answerer;
}
} // namespace

int ShowMessage(QString& text, int kind)
{
    if (G().LanguageIndex != 0)
        text = Translate(text);
    MessageAnswerer answerer = answererSlot();
    const int answer = answerer(text, kind);
    if (kind == 0)
        return 0;
    if (answer == 6 || answer == 7)
        G().MessageAnswer = answer;
    return G().MessageAnswer;
}

int ShowMessage(const QString& text, int kind)
{
    QString copy = text;
    return ShowMessage(copy, kind);
}

MessageAnswerer SetMessageAnswerer(MessageAnswerer answerer)
{
    MessageAnswerer previous = std::move(answererSlot());
    answererSlot() = answerer ? std::move(answerer) : MessageAnswerer(answerOnConsole);
    return previous;
}

} // namespace vmk
