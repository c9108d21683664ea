#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace vmk::eject
{

// The helper's own small window: a rounded panel with one line of text that
// reads "Espere expulsando..." while the device is released, then the result.
class EjectWindow : public QWidget
{
    Q_OBJECT
public:
    explicit EjectWindow(QWidget* parent = nullptr);
    void SetText(const QString& text);
    void ShowDone(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* m_text;
    QPushButton* m_close;
};

} // namespace vmk::eject
