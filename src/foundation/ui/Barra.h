#pragma once

#include "foundation/Progress.h"

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace vmk
{

class AnimationArea;

// The progress form of file transfers, shown without modality while its owner is
// disabled. Controls and what the transfer writes into them:
//   Animation     the animation strip, opened on "\FileCopy.avi" or "\Filedel.avi"
//   Label1/LabelC "Tarea:" and the count label ("1\1", "2\5", ...)
//   Label2/LabelF "Archivo:" and the file in progress
//   Label3/Label4 "De:" and the folder it comes from
//   Label5        "Archivo actual", the caption of ProgressBarF (the file in percent)
//   Label6        "Porcentaje Total", the caption of ProgressBarT (the whole item)
//   Command1      cancel: disables itself and sets G().CancelRequested
// While shown, the form takes the foundation's ProgressBarF and ProgressBarT reports.
class Barra : public QDialog
{
    Q_OBJECT
public:
    explicit Barra(QWidget* parent = nullptr);
    ~Barra() override;

    QProgressBar* ProgressBarF() const { return m_progressBarF; }
    QProgressBar* ProgressBarT() const { return m_progressBarT; }
    AnimationArea* Animation() const { return m_animation; }
    QLabel* LabelF() const { return m_labelF; }
    QLabel* LabelC() const { return m_labelC; }
    // Label1 to Label6 by number; nullptr outside 1..6.
    QLabel* Label(int n) const;
    QPushButton* Command1() const { return m_command1; }

    void Command1_Click();

    // Values from 0 to 100; anything outside is clamped.
    void SetFileProgress(int percent);
    void SetTotalProgress(int percent);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void connectProgress(bool on);

    QProgressBar* m_progressBarF;
    QProgressBar* m_progressBarT;
    AnimationArea* m_animation;
    QLabel* m_labelF;
    QLabel* m_labelC;
    QLabel* m_labels[6];
    QPushButton* m_command1;
    bool m_hooked = false;
    ProgressHook m_previousF;
    ProgressHook m_previousT;
};

} // namespace vmk
