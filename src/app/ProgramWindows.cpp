#include "ProgramWindows.h"

#include "components/engine/Engine.h"
#include "foundation/ui/Splash.h"
#include "panel/ui/Form1.h"

#include <QAction>
#include <QCoreApplication>
#include <QPixmap>

#include <cstdio>

namespace vmk
{

ProgramWindows::ProgramWindows(EnvironmentHooks hooks)
    : m_hooks(std::move(hooks))
{
    panel::Form1::Hooks formHooks;
    formHooks.removeTrayIcon = [this] { m_splash->RemoveTrayIcon(); };
    formHooks.hideToTray = [this] {
        if (!m_splash->TrayIcon())
            return false;
        m_splash->ShowPanelEntry();
        return true;
    };
    formHooks.endProgram = [](int code) {
        std::fflush(nullptr);
        QCoreApplication::exit(code);
    };
    m_form = new panel::Form1(m_panel, formHooks);

    Splash::Hooks splashHooks;
    splashHooks.loadEngine = [] { return int(engine::LoadEngine()); };
    splashHooks.showPanel = [this] {
        m_panelShown = true;
        m_form->show();
        m_form->Form_Load();
        m_hooks.panelShown(*m_form);
    };
    splashHooks.exitPanel = [this] { m_form->Image20_Click(); };
    splashHooks.restorePanel = [this] { m_form->BringToFront(); };
    m_splash = new Splash(QPixmap(QStringLiteral(":/panel/icons/splash.png")),
        QIcon(QStringLiteral(":/panel/icons/vormak.png")), splashHooks);
}

ProgramWindows::~ProgramWindows()
{
    delete m_form;
    delete m_splash;
}

void ProgramWindows::start()
{
    m_splash->show();
    m_splash->Form_Load();
    m_hooks.splashShown(*m_splash);
}

void ProgramWindows::bringToFront()
{
    if (!m_panelShown || m_form->Unloaded()) {
        if (m_splash->isVisible())
            m_splash->raise();
        return;
    }
    m_splash->PanelEntry()->setVisible(false);
    m_form->BringToFront();
}

} // namespace vmk
