#pragma once

#include <QString>

class QWidget;

namespace vmk
{

// What the environment asks of a run besides the program itself, for the
// benchmarks and the documentation:
//   VMK_EXIT_WHEN_SHOWN=1  ends the program as soon as the panel is up and
//                          prints the time it took ("panel shown after N ms");
//   VMK_GRAB_DIR=DIR       saves pictures of the splash and the panel there.
class EnvironmentHooks
{
public:
    static EnvironmentHooks fromEnvironment();

    // Right after the splash's Form_Load.
    void splashShown(QWidget& splash) const;
    // Right after the panel's Form_Load.
    void panelShown(QWidget& panel) const;

private:
    bool m_exitWhenShown = false;
    QString m_grabDir;
};

} // namespace vmk
