#include "CliFailure.h"
#include "CommandLine.h"
#include "CommandRegistry.h"

#include "foundation/Globals.h"
#include "foundation/Translate.h"

#include <cstdio>

namespace
{

// vmk translate LANG TEXT: the text as the program would show it in language LANG.
// A literal \r\n in TEXT stands for the line break that some messages hold.
int runTranslate(const QStringList& args)
{
    const CommandLine cl(args, {});
    cl.expectOperands(2, -1, { QStringLiteral("LANG"), QStringLiteral("TEXT") });
    bool ok = false;
    const int language = cl.operands().at(0).toInt(&ok);
    if (!ok || language < 0 || language > 6)
        throw CliFailure::usage(cl.operands().at(0), QStringLiteral("valor no válido"));
    QString text = cl.operands().mid(1).join(u' ');
    text.replace(QStringLiteral("\\r\\n"), QStringLiteral("\r\n"));
    vmk::G().LanguageIndex = language;
    const QString result = vmk::Translate(text);
    std::fprintf(stdout, "%s\n", result.toUtf8().constData());
    return 0;
}

const CommandRegistry::Registrar registrar("translate",
    { QStringLiteral("translate LANG TEXT"), QStringLiteral("a text of the program in language LANG"),
        QStringLiteral("  LANG   0 Spanish, 1 English, 2 German, 3 Portuguese, 4 French, 5 Italian, 6 Chinese\n"
                       "  TEXT   the Spanish text; \\r\\n stands for a line break"),
        runTranslate });

} // namespace
