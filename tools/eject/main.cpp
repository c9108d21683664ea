// eject.exe "<language index>|<drive>": started by Vormak as it quits, from the
// per-user system folder, so that nothing of the program holds the device.
#include "EjectTarget.h"
#include "EjectWindow.h"
#include "Ejector.h"

#include "foundation/Globals.h"
#include "foundation/Translate.h"
#include "platform/DeviceFonts.h"

#include <QApplication>
#include <QCoreApplication>
#include <QStringList>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace
{
bool haveDisplay()
{
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void say(const QString& text)
{
    std::fprintf(stdout, "%s\n", text.toUtf8().constData());
    std::fflush(stdout);
}
} // namespace

int main(int argc, char** argv)
{
    vmk::DeviceFonts::useWhenHostHasNone();
    std::unique_ptr<QCoreApplication> app;
    const bool windowed = haveDisplay();
    if (windowed)
        app = std::make_unique<QApplication>(argc, argv);
    else
        app = std::make_unique<QCoreApplication>(argc, argv);

    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    vmk::eject::EjectTarget target;
    if (!target.Parse(args.join(QLatin1Char(' ')))) {
        std::fprintf(stderr, "usage: eject.exe \"<language>|<drive>\" (for example 1|E:)\n");
        return 2;
    }
    vmk::G().LanguageIndex = target.LanguageIndex();
    const QString waiting = vmk::Translate(QStringLiteral("Espere expulsando..."));
    const QString done = vmk::Translate(QStringLiteral("Dispositivo expulsado."));
    const QString failed = vmk::Translate(QStringLiteral("¡Error, el dispositivo NO pudo expulsarse correctamente!"));

    const QString root = target.NativeRoot();
    bool ok = false;
    if (!windowed) {
        say(waiting);
        if (!root.isEmpty()) {
            vmk::eject::Ejector ejector(root);
            ok = ejector.Eject();
        }
        say(ok ? done : failed);
        return ok ? 0 : 1;
    }

    vmk::eject::EjectWindow window;
    window.SetText(waiting);
    window.show();
    QTimer::singleShot(50, [&] {
        if (!root.isEmpty()) {
            vmk::eject::Ejector ejector(root);
            ok = ejector.Eject();
        }
        window.ShowDone(ok ? done : failed);
        say(ok ? done : failed);
        // The result stays readable for a while, then the helper goes away.
        QTimer::singleShot(5000, &window, &QWidget::close);
    });
    app->exec();
    return ok ? 0 : 1;
}
