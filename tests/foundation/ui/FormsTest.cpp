#include "foundation/Globals.h"
#include "foundation/Messages.h"
#include "foundation/Progress.h"
#include "foundation/ui/AnimationArea.h"
#include "foundation/ui/ApplyLanguage.h"
#include "foundation/ui/Barra.h"
#include "foundation/ui/BarraUpdate.h"
#include "foundation/ui/ClickLabel.h"
#include "foundation/ui/FormEject.h"
#include "foundation/ui/MessageForms.h"
#include "foundation/ui/MsgboxFrm.h"
#include "foundation/ui/MsgboxFrmYN.h"

#include <QApplication>
#include <QCheckBox>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

using vmk::G;

namespace
{

// What the form showed when the scripted click came.
struct Seen {
    QString form;
    QString caption;
    QString yes;
    QString no;
    QString ok;
    bool modal = false;
};

// Polls for a visible top-level form of that name, notes its texts, then clicks the
// named label on it (or presses Escape when `label` is empty).
void clickWhenShown(const QString& formName, const QString& label, Seen* seen)
{
    auto* timer = new QTimer;
    auto* clock = new QElapsedTimer;
    clock->start();
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [=] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (w->objectName() != formName || !w->isVisible())
                continue;
            timer->stop();
            seen->form = w->objectName();
            seen->modal = w->isModal() && QApplication::activeModalWidget() == w;
            if (auto* l = w->findChild<QLabel*>(QStringLiteral("LblCap")))
                seen->caption = l->text();
            if (auto* l = w->findChild<QLabel*>(QStringLiteral("Label3")))
                seen->yes = l->text();
            if (auto* l = w->findChild<QLabel*>(QStringLiteral("Label2")))
                seen->no = l->text();
            if (auto* l = w->findChild<QLabel*>(QStringLiteral("Label1")))
                seen->ok = l->text();
            if (label.isEmpty())
                QTest::keyClick(w, Qt::Key_Escape);
            else
                QTest::mouseClick(w->findChild<QWidget*>(label), Qt::LeftButton);
            timer->deleteLater();
            delete clock;
            return;
        }
        if (clock->elapsed() > 5000) {
            timer->stop();
            timer->deleteLater();
            delete clock;
        }
    });
    timer->start();
}

struct FormsFixture : ::testing::Test {
    void SetUp() override
    {
        G().LanguageIndex = 0;
        G().MessageAnswer = 0;
        G().CancelRequested = false;
        m_previous = vmk::SetMessageAnswerer(nullptr);
        vmk::InstallMessageForms();
    }
    void TearDown() override
    {
        vmk::SetMessageAnswerer(m_previous);
        G().LanguageIndex = 0;
        G().CancelRequested = false;
    }
    vmk::MessageAnswerer m_previous;
};

} // namespace

TEST_F(FormsFixture, ShowMessageKindsThroughTheRealForms)
{
    // Kind 1, "Si" clicked: 6.
    Seen seen;
    clickWhenShown(QStringLiteral("MsgboxFrmYN"), QStringLiteral("Label3"), &seen);
    EXPECT_EQ(vmk::ShowMessage(QStringLiteral("¿Realmente desea salir de Vormak?"), 1), 6);
    EXPECT_EQ(G().MessageAnswer, 6);
    EXPECT_TRUE(seen.modal);
    EXPECT_EQ(seen.caption, QStringLiteral("¿Realmente desea salir de Vormak?"));
    EXPECT_EQ(seen.yes, QStringLiteral("Si"));
    EXPECT_EQ(seen.no, QStringLiteral("No"));

    // Kind 5 behaves as kind 1; "No" clicked: 7.
    seen = {};
    clickWhenShown(QStringLiteral("MsgboxFrmYN"), QStringLiteral("Label2"), &seen);
    EXPECT_EQ(vmk::ShowMessage(QStringLiteral("¿Realmente desea eliminar el archivo seleccionado?"), 5), 7);
    EXPECT_EQ(seen.form, QStringLiteral("MsgboxFrmYN"));
    EXPECT_EQ(G().MessageAnswer, 7);

    // Dismissed without a click: the earlier answer stays in force.
    G().MessageAnswer = 6;
    seen = {};
    clickWhenShown(QStringLiteral("MsgboxFrmYN"), QString(), &seen);
    EXPECT_EQ(vmk::ShowMessage(QStringLiteral("¿Realmente desea salir de Vormak?"), 1), 6);
    EXPECT_EQ(seen.form, QStringLiteral("MsgboxFrmYN"));

    // Kind 0: the notice form, returns 0 and leaves the answer alone.
    seen = {};
    clickWhenShown(QStringLiteral("MsgboxFrm"), QStringLiteral("Label1"), &seen);
    EXPECT_EQ(vmk::ShowMessage(QStringLiteral("¡Nada que actualizar!"), 0), 0);
    EXPECT_TRUE(seen.modal);
    EXPECT_EQ(seen.caption, QStringLiteral("¡Nada que actualizar!"));
    EXPECT_EQ(seen.ok, QStringLiteral("Aceptar"));
    EXPECT_EQ(G().MessageAnswer, 6);
}

TEST_F(FormsFixture, ShowMessageTranslatesTextAndButtons)
{
    G().LanguageIndex = 1;
    Seen seen;
    clickWhenShown(QStringLiteral("MsgboxFrmYN"), QStringLiteral("Label3"), &seen);
    QString text = QStringLiteral("¿Realmente desea salir de Vormak?");
    EXPECT_EQ(vmk::ShowMessage(text, 1), 6);
    EXPECT_EQ(text, QStringLiteral("Really want to exit Vormak?")); // the caller's text changes too
    EXPECT_EQ(seen.caption, QStringLiteral("Really want to exit Vormak?"));
    EXPECT_EQ(seen.yes, QStringLiteral("Yes"));
    EXPECT_EQ(seen.no, QStringLiteral("No"));

    seen = {};
    clickWhenShown(QStringLiteral("MsgboxFrm"), QStringLiteral("Label1"), &seen);
    vmk::ShowMessage(QStringLiteral("¡Error iniciando servicio! (3)"), 0);
    EXPECT_EQ(seen.caption, QStringLiteral("¡Error iniciando servicio! (3)")); // suffixed: stays Spanish
    EXPECT_EQ(seen.ok, QStringLiteral("OK"));

    // Chinese: a known message and its buttons show nothing.
    G().LanguageIndex = 6;
    seen = {};
    clickWhenShown(QStringLiteral("MsgboxFrmYN"), QStringLiteral("Label2"), &seen);
    EXPECT_EQ(vmk::ShowMessage(QStringLiteral("¿Realmente desea salir de Vormak?"), 1), 7);
    EXPECT_EQ(seen.caption, QString());
    EXPECT_EQ(seen.yes, QString());
    EXPECT_EQ(seen.no, QString());
}

TEST_F(FormsFixture, YesNoHoverUnderlinesOneAnswer)
{
    vmk::MsgboxFrmYN form;
    form.show();
    QTest::mouseMove(form.Label2(), QPoint(5, 5));
    emit form.Label2()->mouseMoved();
    EXPECT_TRUE(form.Label2()->isUnderlined());
    EXPECT_FALSE(form.Label3()->isUnderlined());
    emit form.Label3()->mouseMoved();
    EXPECT_FALSE(form.Label2()->isUnderlined());
    EXPECT_TRUE(form.Label3()->isUnderlined());
    QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), QPointF(5, 5), form.mapToGlobal(QPointF(5, 5)), Qt::NoButton,
        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&form, &move);
    EXPECT_FALSE(form.Label2()->isUnderlined());
    EXPECT_FALSE(form.Label3()->isUnderlined());
}

TEST_F(FormsFixture, RoundedOutlineAndMask)
{
    vmk::MsgboxFrm form;
    form.show();
    QApplication::processEvents();
    // The window is cut at the corners and whole elsewhere.
    const QRegion mask = form.mask();
    EXPECT_FALSE(mask.contains(QPoint(0, 0)));
    EXPECT_FALSE(mask.contains(QPoint(form.width() - 1, form.height() - 1)));
    EXPECT_TRUE(mask.contains(QPoint(form.width() / 2, 0)));
    EXPECT_TRUE(mask.contains(QPoint(0, form.height() / 2)));
    // Two-tone outline: white above and left, grey 95 below and right.
    const QImage shot = form.grab().toImage();
    EXPECT_EQ(QColor(shot.pixel(form.width() / 3, 0)), QColor(255, 255, 255));
    EXPECT_EQ(QColor(shot.pixel(0, form.height() / 2)), QColor(255, 255, 255));
    EXPECT_EQ(QColor(shot.pixel(form.width() / 3, form.height() - 1)), QColor(95, 95, 95));
    EXPECT_EQ(QColor(shot.pixel(form.width() - 1, form.height() / 2)), QColor(95, 95, 95));
    // Arcs are computed with pi as 22/7: at 90 degrees the x offset is r*cos(pi'/2), not 0.
    const QPolygon arc = vmk::RoundedForm::QuarterArc(100, 100, 1000, 0);
    EXPECT_EQ(arc.first(), QPoint(1100, 100));
    EXPECT_EQ(arc.last().x(), 100 + int(std::lround(1000 * std::cos(90 * (22.0 / 7.0) / 180.0))));
    EXPECT_NE(arc.last().x(), 100);
}

TEST_F(FormsFixture, FormEjectTellsTheShutDown)
{
    G().LanguageIndex = 1;
    auto* form = new vmk::FormEject;
    form->setAttribute(Qt::WA_DeleteOnClose);
    form->show();
    EXPECT_FALSE(form->isModal());
    EXPECT_EQ(form->LblCap()->text(), QStringLiteral("Finishing services..."));
    QPointer<vmk::FormEject> alive(form);
    QTest::mouseClick(form->Label1(), Qt::LeftButton);
    QApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(alive.isNull());
}

TEST_F(FormsFixture, ApplyLanguageOverAForm)
{
    QWidget form;
    form.setWindowTitle(QStringLiteral("Vormak 1.20 (Panel de Control)"));
    auto* especial = new QLabel(QStringLiteral("Panel de control"), &form);
    especial->setObjectName(QStringLiteral("LabelEspecial"));
    QFont big(QStringLiteral("DejaVu Serif"), 16);
    big.setBold(true);
    especial->setFont(big);
    auto* unidad = new QLabel(QStringLiteral("Unidad"), &form);
    auto* number = new QLabel(QStringLiteral("42"), &form);
    auto* empty = new QLabel(QString(), &form);
    auto* ok = new QPushButton(QStringLiteral("Aceptar"), &form);
    auto* hide = new QCheckBox(QStringLiteral("Ocultar"), &form);
    auto* group = new QGroupBox(QStringLiteral("Espacio"), &form);
    auto* inGroup = new QLabel(QStringLiteral("Total:"), group);
    auto* tree = new QTreeWidget(&form);
    tree->setHeaderLabels({ QStringLiteral("Archivo"), QStringLiteral("Amenaza"), QStringLiteral("Ruta X") });
    auto* table = new QTableWidget(0, 2, &form);
    table->setHorizontalHeaderLabels({ QStringLiteral("Estatus"), QStringLiteral("Razón") });
    auto* bar = new QMenuBar(&form);
    QMenu* menu = bar->addMenu(QStringLiteral("Ver"));
    QAction* open = menu->addAction(QStringLiteral("Abrir"));
    QMenu* sub = menu->addMenu(QStringLiteral("Editar"));
    QAction* paste = sub->addAction(QStringLiteral("Pegar"));
    menu->addSeparator();
    auto* text = new QLabel(QStringLiteral("Renombrar"), &form);

    auto expectAll = [&](const char* title, const char* unit, const char* okText, const char* hideText,
                         const char* space, const char* total, const char* file, const char* threat, const char* status,
                         const char* view, const char* openText, const char* pasteText) {
        EXPECT_EQ(form.windowTitle(), QString::fromUtf8(title));
        EXPECT_EQ(unidad->text(), QString::fromUtf8(unit));
        EXPECT_EQ(ok->text(), QString::fromUtf8(okText));
        EXPECT_EQ(hide->text(), QString::fromUtf8(hideText));
        EXPECT_EQ(group->title(), QString::fromUtf8(space));
        EXPECT_EQ(inGroup->text(), QString::fromUtf8(total));
        EXPECT_EQ(tree->headerItem()->text(0), QString::fromUtf8(file));
        EXPECT_EQ(tree->headerItem()->text(1), QString::fromUtf8(threat));
        EXPECT_EQ(tree->headerItem()->text(2), QStringLiteral("Ruta X"));
        EXPECT_EQ(table->horizontalHeaderItem(0)->text(), QString::fromUtf8(status));
        EXPECT_EQ(menu->title(), QString::fromUtf8(view));
        EXPECT_EQ(open->text(), QString::fromUtf8(openText));
        EXPECT_EQ(paste->text(), QString::fromUtf8(pasteText));
        EXPECT_EQ(number->text(), QStringLiteral("42"));
        EXPECT_EQ(empty->text(), QString());
    };

    G().LanguageIndex = 1;
    vmk::ApplyLanguage(&form);
    expectAll("Vormak 1.20 (Control Panel)", "Unit", "OK", "Hide", "Space", "Total:", "File", "Threat", "Status",
        "View", "Open", "Paste");
    EXPECT_EQ(especial->text(), QStringLiteral("Control Panel"));
    EXPECT_EQ(sub->title(), QStringLiteral("Edit"));
    // Fonts: 9-point plain sans everywhere but the title label.
    EXPECT_EQ(unidad->font().pointSize(), 9);
    EXPECT_EQ(unidad->font().family(), QStringLiteral("DejaVu Sans"));
    EXPECT_EQ(inGroup->font().pointSize(), 9);
    EXPECT_EQ(especial->font().pointSize(), 16);
    EXPECT_TRUE(especial->font().bold());
    EXPECT_EQ(especial->font().family(), QStringLiteral("DejaVu Serif"));

    // Applying twice changes nothing.
    vmk::ApplyLanguage(&form);
    EXPECT_EQ(unidad->text(), QStringLiteral("Unit"));

    // Another language starts from the design text.
    G().LanguageIndex = 2;
    vmk::ApplyLanguage(&form);
    expectAll("Vormak 1.20 (Systemsteuerung)", "Unity", "OK", "Verstecken", "Raum", "Gesamt:", "Datei", "Bedrohung",
        "Status", "Ansicht", "Öffnen", "Einfügen");

    // Chinese: known captions blank out, the CJK font is taken.
    G().LanguageIndex = 6;
    vmk::ApplyLanguage(&form);
    expectAll("", "", "", "", "", "", "", "", "", "", "", "");
    EXPECT_EQ(unidad->font().family(), QStringLiteral("WenQuanYi Micro Hei"));
    EXPECT_EQ(especial->font().family(), QStringLiteral("DejaVu Serif"));

    // A caption set by code after a pass becomes that control's design text.
    text->setText(QStringLiteral("Nuevo"));
    G().LanguageIndex = 1;
    vmk::ApplyLanguage(&form);
    EXPECT_EQ(text->text(), QStringLiteral("New"));

    // Back to Spanish: the design texts return.
    G().LanguageIndex = 0;
    vmk::ApplyLanguage(&form);
    expectAll("Vormak 1.20 (Panel de Control)", "Unidad", "Aceptar", "Ocultar", "Espacio", "Total:", "Archivo",
        "Amenaza", "Estatus", "Ver", "Abrir", "Pegar");
    EXPECT_EQ(text->text(), QStringLiteral("Nuevo"));
    EXPECT_EQ(unidad->font().family(), QStringLiteral("DejaVu Sans"));
}

TEST_F(FormsFixture, BarraCancelAndProgress)
{
    G().LanguageIndex = 1;
    vmk::Barra barra;
    EXPECT_EQ(barra.Label(1)->text(), QStringLiteral("Task:"));
    EXPECT_EQ(barra.Label(5)->text(), QStringLiteral("Current file"));
    EXPECT_EQ(barra.Command1()->text(), QStringLiteral("Cancel"));
    EXPECT_EQ(barra.Label(0), nullptr);
    EXPECT_EQ(barra.Label(7), nullptr);
    for (const char* name : { "ProgressBarF", "ProgressBarT", "Animation", "LabelF", "LabelC", "Label1", "Label2",
             "Label3", "Label4", "Label5", "Label6", "Command1" })
        EXPECT_NE(barra.findChild<QWidget*>(QString::fromLatin1(name)), nullptr) << name;

    // Progress reaches the bars only while the form is shown.
    vmk::ProgressBarF(30);
    EXPECT_EQ(barra.ProgressBarF()->value(), 0);
    barra.show();
    EXPECT_FALSE(barra.isModal());
    vmk::ProgressBarF(40);
    vmk::ProgressBarT(250);
    EXPECT_EQ(barra.ProgressBarF()->value(), 40);
    EXPECT_EQ(barra.ProgressBarT()->value(), 100);
    barra.SetFileProgress(-4);
    EXPECT_EQ(barra.ProgressBarF()->value(), 0);
    barra.Animation()->Open(QStringLiteral("E:\\VMK\\Filedel.avi"));
    EXPECT_EQ(barra.Animation()->kind(), vmk::AnimationArea::Kind::Delete);
    EXPECT_TRUE(barra.Animation()->isPlaying());

    EXPECT_FALSE(G().CancelRequested);
    QTest::mouseClick(barra.Command1(), Qt::LeftButton);
    EXPECT_TRUE(G().CancelRequested);
    EXPECT_FALSE(barra.Command1()->isEnabled());
    barra.hide();
    vmk::ProgressBarF(77);
    EXPECT_EQ(barra.ProgressBarF()->value(), 0);
}

TEST_F(FormsFixture, BarraUpdateRunsAndWraps)
{
    vmk::BarraUpdate form;
    EXPECT_TRUE(form.Timer1()->isActive());
    EXPECT_EQ(form.Timer1()->interval(), 30);
    EXPECT_EQ(form.ProgressBar1()->value(), 0);
    for (int i = 1; i <= 19; ++i) {
        form.Timer1_Timer();
        ASSERT_EQ(form.ProgressBar1()->value(), 5 * i);
    }
    form.Timer1_Timer(); // 95 + 5 is exactly 100: back to 0
    EXPECT_EQ(form.ProgressBar1()->value(), 0);
    form.Timer1_Timer();
    EXPECT_EQ(form.ProgressBar1()->value(), 5);

    // The timer itself drives the bar.
    form.show();
    const int before = form.ProgressBar1()->value();
    // Waits for a tick rather than a fixed time: under a sanitizer or a loaded
    // machine showing the form alone can take longer than several intervals.
    QDeadlineTimer deadline(10000);
    while (form.ProgressBar1()->value() == before && !deadline.hasExpired())
        QTest::qWait(10);
    EXPECT_NE(form.ProgressBar1()->value(), before);

    QTest::mouseClick(form.Command1(), Qt::LeftButton);
    EXPECT_TRUE(G().CancelRequested);
    EXPECT_FALSE(form.Command1()->isEnabled());
}

// Pictures of the forms for a look by eye: set VMK_SHOTS to a folder.
TEST_F(FormsFixture, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    QDir().mkpath(dir);
    G().LanguageIndex = 0;
    vmk::MsgboxFrm notice;
    notice.LblCap()->setText(QStringLiteral("¡Análisis finalizado correctamente!"));
    notice.show();
    notice.grab().save(dir + QStringLiteral("/MsgboxFrm.png"));
    vmk::MsgboxFrmYN question;
    question.LblCap()->setText(QStringLiteral("¿Realmente desea salir de Vormak?"));
    question.show();
    emit question.Label3()->mouseMoved();
    question.grab().save(dir + QStringLiteral("/MsgboxFrmYN.png"));
    vmk::FormEject eject;
    eject.show();
    eject.grab().save(dir + QStringLiteral("/FormEject.png"));
    G().LanguageIndex = 1;
    vmk::Barra barra;
    barra.show();
    barra.Animation()->Open(QStringLiteral("\\FileCopy.avi"));
    for (int i = 0; i < 9; ++i)
        QTest::qWait(60);
    barra.LabelC()->setText(QStringLiteral("2\\5"));
    barra.LabelF()->setText(QStringLiteral("E:\\Mis Documentos\\informe.doc"));
    barra.Label(4)->setText(QStringLiteral("C:\\home\\ana\\Documentos\\"));
    barra.SetFileProgress(62);
    barra.SetTotalProgress(35);
    barra.grab().save(dir + QStringLiteral("/Barra.png"));
    vmk::BarraUpdate update;
    update.show();
    QTest::qWait(300);
    update.grab().save(dir + QStringLiteral("/BarraUpdate.png"));
    SUCCEED();
}
