#include "EjectWindow.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace vmk::eject
{

EjectWindow::EjectWindow(QWidget* parent)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_text(new QLabel(this))
    , m_close(new QPushButton(QStringLiteral("OK"), this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(340, 120);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 18, 18, 14);
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setWordWrap(true);
    m_text->setStyleSheet(QStringLiteral("color:#1d2b36;font-size:10pt;"));
    layout->addWidget(m_text, 1);
    m_close->setVisible(false);
    m_close->setFixedWidth(90);
    layout->addWidget(m_close, 0, Qt::AlignHCenter);
    connect(m_close, &QPushButton::clicked, this, &QWidget::close);
    if (QScreen* s = QGuiApplication::primaryScreen())
        move(s->availableGeometry().center() - rect().center());
}

void EjectWindow::SetText(const QString& text)
{
    m_text->setText(text);
}

void EjectWindow::ShowDone(const QString& text)
{
    m_text->setText(text);
    m_close->setVisible(true);
}

void EjectWindow::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 15, 15);
    p.fillPath(shape, QColor(0xf4, 0xf7, 0xfa));
    // Two-tone outline: light on the top and left, shadow on the bottom and right.
    p.setClipRect(QRect(0, 0, width(), height() / 2));
    p.strokePath(shape, QPen(Qt::white, 2));
    p.setClipRect(QRect(0, height() / 2, width(), height() - height() / 2));
    p.strokePath(shape, QPen(QColor(95, 95, 95), 2));
}

} // namespace vmk::eject
