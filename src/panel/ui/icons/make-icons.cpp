// Draws the panel's pictures into PNG files: each tool button in a resting and
// a lit form, the shield of the program, the splash picture and the panel's
// background. Run make-icons.sh after changing a drawing; the PNGs are
// committed and bundled through panel.qrc.
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <functional>

namespace
{
const int kSize = 72;

using Glyph = std::function<void(QPainter&)>;

QPen pen(qreal w, QColor c = Qt::white)
{
    QPen p(c, w);
    p.setCapStyle(Qt::RoundCap);
    p.setJoinStyle(Qt::RoundJoin);
    return p;
}

// A two-colour ramp from the origin to `end`.
QLinearGradient ramp(QPointF end, QColor from, QColor to)
{
    QLinearGradient g(QPointF(0, 0), end);
    g.setColorAt(0, from);
    g.setColorAt(1, to);
    return g;
}

// The deep teal of the splash and of the panel's title band.
const QColor kTealFrom(0x12, 0x2a, 0x3a);
const QColor kTealTo(0x0b, 0x4d, 0x5c);

// A glyph is drawn in a 72x72 box, in white, by strokes and fills.
void folder(QPainter& p)
{
    QPainterPath back;
    back.moveTo(14, 24);
    back.lineTo(30, 24);
    back.lineTo(34, 28);
    back.lineTo(58, 28);
    back.lineTo(58, 52);
    back.lineTo(14, 52);
    back.closeSubpath();
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    p.drawPath(back);
    p.drawLine(QPointF(14, 34), QPointF(58, 34));
    p.setPen(pen(3));
    p.drawLine(QPointF(40, 44), QPointF(50, 44));
    p.drawLine(QPointF(46, 40), QPointF(50, 44));
    p.drawLine(QPointF(46, 48), QPointF(50, 44));
}

void magnifier(QPainter& p, QPointF c, qreal r)
{
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(c, r, r);
    const qreal d = r * 0.72;
    p.setPen(pen(5));
    p.drawLine(c + QPointF(d, d), c + QPointF(d + r * 0.8, d + r * 0.8));
}

void scanPc(QPainter& p)
{
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(QRectF(12, 16, 40, 28), 3, 3);
    p.drawLine(QPointF(32, 44), QPointF(32, 51));
    p.drawLine(QPointF(22, 52), QPointF(40, 52));
    magnifier(p, QPointF(46, 42), 8);
}

void scanDevice(QPainter& p)
{
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(QRectF(18, 26, 22, 32), 4, 4);
    p.drawRect(QRectF(22, 16, 14, 10));
    p.setBrush(Qt::white);
    p.setPen(Qt::NoPen);
    p.drawRect(QRectF(25, 19, 3, 3));
    p.drawRect(QRectF(30, 19, 3, 3));
    magnifier(p, QPointF(46, 38), 8);
}

void update(QPainter& p)
{
    p.setPen(pen(4));
    p.setBrush(Qt::NoBrush);
    const QRectF r(16, 16, 40, 40);
    p.drawArc(r, 30 * 16, 150 * 16);
    p.drawArc(r, 210 * 16, 150 * 16);
    // Arrow heads at the ends of the two arcs.
    auto head = [&](QPointF tip, qreal angle) {
        QPainterPath a;
        const qreal s = 8;
        a.moveTo(tip);
        a.lineTo(tip + QPointF(std::cos(angle + 2.6) * s, std::sin(angle + 2.6) * s));
        a.lineTo(tip + QPointF(std::cos(angle - 2.6) * s, std::sin(angle - 2.6) * s));
        a.closeSubpath();
        p.setPen(pen(2));
        p.setBrush(Qt::white);
        p.drawPath(a);
    };
    head(QPointF(36 + 20 * std::cos(M_PI / 6), 36 - 20 * std::sin(M_PI / 6)), -M_PI / 2 + 0.5);
    head(QPointF(36 - 20 * std::cos(M_PI / 6), 36 + 20 * std::sin(M_PI / 6)), M_PI / 2 + 0.5);
    p.setPen(pen(3));
    p.drawLine(QPointF(36, 28), QPointF(36, 42));
    p.drawLine(QPointF(31, 38), QPointF(36, 43));
    p.drawLine(QPointF(41, 38), QPointF(36, 43));
}

void backups(QPainter& p)
{
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(QRectF(14, 18, 44, 11), 2, 2);
    p.drawRect(QRectF(17, 29, 38, 25));
    p.drawLine(QPointF(30, 37), QPointF(42, 37));
}

void passwords(QPainter& p)
{
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(24, 12, 24, 26), 0, 180 * 16);
    p.drawLine(QPointF(24, 25), QPointF(24, 31));
    p.drawLine(QPointF(48, 25), QPointF(48, 31));
    p.drawRoundedRect(QRectF(18, 31, 36, 26), 4, 4);
    p.setBrush(Qt::white);
    p.setPen(Qt::NoPen);
    p.drawEllipse(QPointF(36, 41), 3.5, 3.5);
    p.drawRect(QRectF(34.5, 42, 3, 8));
}

void ejectGlyph(QPainter& p)
{
    QPainterPath tri;
    tri.moveTo(36, 16);
    tri.lineTo(56, 40);
    tri.lineTo(16, 40);
    tri.closeSubpath();
    p.setPen(pen(2));
    p.setBrush(Qt::white);
    p.drawPath(tri);
    p.drawRoundedRect(QRectF(16, 46, 40, 8), 2, 2);
}

void settings(QPainter& p)
{
    QPainterPath gear;
    const QPointF c(36, 36);
    const int teeth = 8;
    for (int i = 0; i < teeth * 2; ++i) {
        const qreal a0 = (i - 0.5) * M_PI / teeth, a1 = (i + 0.5) * M_PI / teeth;
        const qreal r = (i % 2 == 0) ? 21 : 16;
        const QPointF p0 = c + QPointF(std::cos(a0) * r, std::sin(a0) * r);
        const QPointF p1 = c + QPointF(std::cos(a1) * r, std::sin(a1) * r);
        if (i == 0)
            gear.moveTo(p0);
        else
            gear.lineTo(p0);
        gear.lineTo(p1);
    }
    gear.closeSubpath();
    QPainterPath hole;
    hole.addEllipse(c, 7, 7);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawPath(gear.subtracted(hole));
}

void news(QPainter& p)
{
    p.setPen(pen(3.5));
    p.setBrush(Qt::NoBrush);
    const QPointF c(36, 36);
    p.drawEllipse(c, 20, 20);
    p.drawEllipse(c, 9, 20);
    p.drawLine(QPointF(16, 36), QPointF(56, 36));
    p.setPen(pen(2.5));
    p.drawLine(QPointF(20, 26), QPointF(52, 26));
    p.drawLine(QPointF(20, 46), QPointF(52, 46));
}

void shieldPath(QPainterPath& s, QRectF r)
{
    const qreal x = r.x(), y = r.y(), w = r.width(), h = r.height();
    s.moveTo(x + w / 2, y);
    s.cubicTo(x + w * 0.7, y + h * 0.08, x + w * 0.88, y + h * 0.1, x + w, y + h * 0.1);
    s.cubicTo(x + w, y + h * 0.55, x + w * 0.8, y + h * 0.85, x + w / 2, y + h);
    s.cubicTo(x + w * 0.2, y + h * 0.85, x, y + h * 0.55, x, y + h * 0.1);
    s.cubicTo(x + w * 0.12, y + h * 0.1, x + w * 0.3, y + h * 0.08, x + w / 2, y);
    s.closeSubpath();
}

void help(QPainter& p)
{
    p.setPen(pen(4));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(25, 15, 22, 22), -60 * 16, 240 * 16);
    p.drawLine(QPointF(36 + 11 * std::cos(M_PI / 3), 26 + 11 * std::sin(M_PI / 3)), QPointF(36, 44));
    p.setBrush(Qt::white);
    p.setPen(Qt::NoPen);
    p.drawEllipse(QPointF(36, 53), 3, 3);
}

// The tile behind a glyph: slate at rest, the button's own colour when lit.
QImage tile(const Glyph& glyph, QColor accent, bool lit)
{
    QImage img(kSize, kSize, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF r(3, 3, kSize - 6, kSize - 6);
    if (lit) {
        QRadialGradient glow(QPointF(36, 36), 36);
        glow.setColorAt(0.75, QColor(accent.red(), accent.green(), accent.blue(), 110));
        glow.setColorAt(1.0, QColor(accent.red(), accent.green(), accent.blue(), 0));
        p.setPen(Qt::NoPen);
        p.setBrush(glow);
        p.drawEllipse(QRectF(0, 0, kSize, kSize));
    }
    QLinearGradient g(r.topLeft(), r.bottomLeft());
    if (lit) {
        g.setColorAt(0, accent.lighter(135));
        g.setColorAt(1, accent.darker(115));
    } else {
        g.setColorAt(0, QColor(0x5b, 0x6b, 0x7a));
        g.setColorAt(1, QColor(0x3d, 0x4a, 0x57));
    }
    p.setPen(QPen(lit ? accent.lighter(160) : QColor(0x2c, 0x36, 0x40), 1.5));
    p.setBrush(g);
    p.drawRoundedRect(r.adjusted(2, 2, -2, -2), 14, 14);
    p.setOpacity(lit ? 1.0 : 0.82);
    glyph(p);
    return img;
}

enum class ShieldMark { None, Check, Failed };

// The program's shield: green with a check while the engine runs, red with a
// cross when it could not start.
QImage shield(int size, ShieldMark mark)
{
    QImage img(size, size, QImage::Format_ARGB32_Premultiplied);
    img.fill(Qt::transparent);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 72.0, size / 72.0);
    QPainterPath s;
    shieldPath(s, QRectF(10, 5, 52, 62));
    QLinearGradient g(QPointF(10, 5), QPointF(62, 67));
    if (mark == ShieldMark::Failed) {
        g.setColorAt(0, QColor(0xe5, 0x4b, 0x3c));
        g.setColorAt(1, QColor(0x8c, 0x1d, 0x18));
        p.setPen(QPen(QColor(0x5c, 0x12, 0x0f), 2));
    } else {
        g.setColorAt(0, QColor(0x2f, 0xb5, 0x8a));
        g.setColorAt(1, QColor(0x0d, 0x5e, 0x7a));
        p.setPen(QPen(QColor(0x0a, 0x3d, 0x50), 2));
    }
    p.setBrush(g);
    p.drawPath(s);
    if (mark == ShieldMark::Check) {
        p.setPen(pen(6));
        p.drawLine(QPointF(24, 36), QPointF(33, 46));
        p.drawLine(QPointF(33, 46), QPointF(50, 25));
    } else if (mark == ShieldMark::Failed) {
        p.setPen(pen(6));
        p.drawLine(QPointF(26, 24), QPointF(46, 46));
        p.drawLine(QPointF(46, 24), QPointF(26, 46));
    }
    return img;
}

QImage splash()
{
    QImage img(420, 240, QImage::Format_ARGB32_Premultiplied);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(img.rect(), ramp(QPointF(420, 240), kTealFrom, kTealTo));
    // Faint rings behind the shield.
    for (int i = 0; i < 6; ++i) {
        p.setPen(QPen(QColor(255, 255, 255, 14 + i * 3), 2));
        p.drawEllipse(QPointF(95, 105), 40 + i * 16, 40 + i * 16);
    }
    p.drawImage(QPointF(40, 50), shield(110, ShieldMark::Check));
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(44);
    f.setBold(true);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(QRectF(170, 62, 240, 60), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Vormak"));
    f.setPixelSize(14);
    f.setBold(false);
    p.setFont(f);
    p.setPen(QColor(0xb8, 0xe6, 0xd8));
    p.drawText(QRectF(172, 116, 240, 24), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Portable Security Suite"));
    return img;
}

QImage background()
{
    QImage img(640, 460, QImage::Format_ARGB32_Premultiplied);
    QPainter p(&img);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(img.rect(), ramp(QPointF(0, 460), QColor(0xee, 0xf3, 0xf7), QColor(0xd9, 0xe3, 0xeb)));
    p.fillRect(QRectF(0, 0, 640, 58), ramp(QPointF(640, 0), kTealFrom, kTealTo));
    p.setPen(QPen(QColor(0x2f, 0xb5, 0x8a), 3));
    p.drawLine(QPointF(0, 58.5), QPointF(640, 58.5));
    // The card under the space figures and the card under the signature data.
    p.setPen(QPen(QColor(0xc3, 0xcf, 0xd9), 1));
    p.setBrush(QColor(255, 255, 255, 200));
    p.drawRoundedRect(QRectF(16, 72, 290, 232), 10, 10);
    p.drawRoundedRect(QRectF(16, 316, 290, 128), 10, 10);
    return img;
}
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QString out = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    QDir().mkpath(out);
    struct Button {
        const char* name;
        Glyph glyph;
        QColor accent;
    };
    const Button buttons[] = {
        { "filemanager", folder, QColor(0xe8, 0x9b, 0x17) },
        { "scanpc", scanPc, QColor(0x1f, 0x8f, 0xd6) },
        { "update", update, QColor(0x22, 0xa6, 0x5a) },
        { "backups", backups, QColor(0x8a, 0x5c, 0xd1) },
        { "passwords", passwords, QColor(0xd1, 0x45, 0x45) },
        { "eject", ejectGlyph, QColor(0x4e, 0x5d, 0x6c) },
        { "scandevice", scanDevice, QColor(0x12, 0xa3, 0xa3) },
        { "settings", settings, QColor(0x6b, 0x7d, 0x8f) },
        { "news", news, QColor(0x2b, 0x6c, 0xd6) },
        { "help", help, QColor(0x2b, 0x6c, 0xd6) },
    };
    for (const Button& b : buttons) {
        tile(b.glyph, b.accent, false).save(out + QStringLiteral("/%1.png").arg(QLatin1String(b.name)));
        tile(b.glyph, b.accent, true).save(out + QStringLiteral("/%1-lit.png").arg(QLatin1String(b.name)));
    }
    shield(64, ShieldMark::Check).save(out + QStringLiteral("/vormak.png"));
    shield(64, ShieldMark::Failed).save(out + QStringLiteral("/vormak-failed.png"));
    shield(22, ShieldMark::None).save(out + QStringLiteral("/tray.png"));
    splash().save(out + QStringLiteral("/splash.png"));
    background().save(out + QStringLiteral("/background.png"));
    return 0;
}
