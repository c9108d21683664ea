#include "CommandRegistry.h"

#include "foundation/Globals.h"
#include "foundation/Translate.h"

#include <cstdio>

namespace {

// vmk translate LANG TEXT: the text as the program would show it in language LANG.
// A literal \r\n in TEXT stands for the line break that some messages hold.
int runTranslate(const QStringList& args)
{
    if (args.size() < 2) {
        std::fprintf(stderr, "usage: vmk translate LANG TEXT\n");
        return 2;
    }
    bool ok = false;
    const int language = args.at(0).toInt(&ok);
    if (!ok || language < 0 || language > 6) {
        std::fprintf(stderr, "vmk translate: LANG must be a language index from 0 to 6, not '%s'\n",
                     args.at(0).toUtf8().constData());
        return 2;
    }
    QString text = args.mid(1).join(u' ');
    text.replace(QStringLiteral("\\r\\n"), QStringLiteral("\r\n"));
    vmk::G().LanguageIndex = language;
    const QString result = vmk::Translate(text);
    std::fprintf(stdout, "%s\n", result.toUtf8().constData());
    return 0;
}

const CommandRegistry::Registrar registrar("translate", "translate LANG TEXT   the text in language LANG (0-6)",
                                           runTranslate);

}  // namespace
