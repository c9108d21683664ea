#include "EnvironmentHooks.h"

#include "components/engine/Engine.h"
#include "platform/ProcessClock.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <cstdio>

namespace vmk
{

EnvironmentHooks EnvironmentHooks::fromEnvironment()
{
    EnvironmentHooks hooks;
    hooks.m_exitWhenShown = qEnvironmentVariableIntValue("VMK_EXIT_WHEN_SHOWN") == 1;
    hooks.m_grabDir = qEnvironmentVariable("VMK_GRAB_DIR");
    return hooks;
}

void EnvironmentHooks::splashShown(QWidget& splash) const
{
    if (!m_grabDir.isEmpty())
        splash.grab().save(m_grabDir + QStringLiteral("/splash.png"));
}

void EnvironmentHooks::panelShown(QWidget& panel) const
{
    if (!m_grabDir.isEmpty()) {
        // Once the pie and the figures are painted.
        QPointer<QWidget> shown(&panel);
        const QString file = m_grabDir + QStringLiteral("/panel.png");
        QTimer::singleShot(400, [shown, file] {
            if (shown)
                shown->grab().save(file);
        });
    }
    if (m_exitWhenShown) {
        QTimer::singleShot(0, [] {
            std::printf("panel shown after %.1f ms\n", platform::MillisecondsSinceProcessStart());
            std::fflush(stdout);
            engine::UnLoadEngine();
            QCoreApplication::exit(0);
        });
    }
}

} // namespace vmk
