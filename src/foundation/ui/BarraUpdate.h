#pragma once

#include <QDialog>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace vmk
{

class AnimationArea;

// The progress form of the signature update. Its bar only runs, it tells nothing of
// the update's real progress: Timer1 (30 ms, running from the start) adds 5 at each
// tick and starts again from 0 when the bar reaches exactly 100.
class BarraUpdate : public QDialog
{
    Q_OBJECT
public:
    explicit BarraUpdate(QWidget* parent = nullptr);

    QProgressBar* ProgressBar1() const { return m_progressBar1; }
    AnimationArea* PicFiles() const { return m_picFiles; }
    QLabel* Label1() const { return m_label1; }
    QTimer* Timer1() { return &m_timer1; }
    QPushButton* Command1() const { return m_command1; }

    void Timer1_Timer();
    void Command1_Click();

private:
    QProgressBar* m_progressBar1;
    AnimationArea* m_picFiles;
    QLabel* m_label1;
    QPushButton* m_command1;
    QTimer m_timer1;
};

} // namespace vmk
