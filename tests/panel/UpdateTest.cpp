#include "DeviceFixture.h"

#include "components/engine/Engine.h"
#include "foundation/Globals.h"
#include "panel/ControlPanel.h"
#include "panel/SignatureDate.h"
#include "panel/ui/Form1.h"
#include "platform/Pump.h"

#include "TestSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>

using namespace vmk;
using namespace vmk::panel;

class UpdateTest : public test::DeviceFixture
{
protected:
    // An updater that writes the given log text and, when asked, a new index.
    void fakeUpdater(const QByteArray& log, const QDate& newIndex = QDate())
    {
        QByteArray body = "printf '%s' \"$*\" > '" + m_host.filePath(QStringLiteral("args.txt")).toUtf8() + "'\n";
        const QString logPath = native(QStringLiteral("E:\\UPDLOG.TXT"));
        QFile::remove(logPath);
        if (!log.isNull())
            body += "printf '" + log + "' > '" + logPath.toUtf8() + "'\n";
        if (newIndex.isValid())
            body += "printf '" + indexLine(newIndex).trimmed() + "\\r\\n' > '"
                + native(m_programFolder + QStringLiteral("\\idx\\master.idx")).toUtf8() + "'\n";
        putScript(m_programFolder + QStringLiteral("\\avupdate.exe"), body);
    }
    QString args() const { return QString::fromUtf8(test::readFile(m_host.filePath(QStringLiteral("args.txt")))); }

    ControlPanel m_panel;
};

TEST_F(UpdateTest, VerdictsOfTheLastLine)
{
    const QDate old = QDate::currentDate().addDays(-1);
    put(m_programFolder + QStringLiteral("\\idx\\master.idx"), indexLine(old));
    Form1 form(m_panel, {});
    form.label("Label8")->setText(SignatureDate::CaptionFromDate(old));
    test::MessageRecorder messages;

    fakeUpdater("Checking\\r\\nNothing to update\\r\\n");
    form.Image15_Click();
    EXPECT_EQ(args(), QStringLiteral("--config=avupdate.conf --log=E:\\UPDLOG.TXT"));
    fakeUpdater("Checking\\r\\nerror: source folder missing\\r\\n");
    form.Image15_Click();
    fakeUpdater(QByteArray()); // no log at all
    form.Image15_Click();
    fakeUpdater(""); // an empty log
    form.Image15_Click();
    fakeUpdater("Update finished\\r\\n\\r\\n"); // a trailing empty line: silent
    form.Image15_Click();
    fakeUpdater("Something else\\r\\n");
    form.Image15_Click();
    EXPECT_EQ(messages.texts,
        QStringList({ QStringLiteral("¡Nada que actualizar!"), QStringLiteral("¡Error al actualizar!"),
            QStringLiteral("¡Error al actualizar!"), QStringLiteral("¡Error al actualizar!") }));
    EXPECT_TRUE(form.isEnabled());

    // Finished, answered no: the labels keep the old data.
    messages.texts.clear();
    messages.script({ 7 });
    fakeUpdater("Update finished\\r\\n", QDate::currentDate());
    form.Image15_Click();
    EXPECT_EQ(
        messages.texts, QStringList({ QStringLiteral("¿Las firmas fueron actualizadas, desea reiniciar el motor?") }));
    EXPECT_EQ(form.label("Label8")->text(), SignatureDate::CaptionFromDate(old));
    // Answered yes: the engine restarts and the date is read again.
    messages.script({ 6 });
    form.Image15_Click();
    EXPECT_EQ(form.label("Label8")->text(), SignatureDate::CaptionFromDate(QDate::currentDate()));
    EXPECT_TRUE(form.isEnabled());
}

TEST_F(UpdateTest, MissingUpdaterIsAnErrorNotACrash)
{
    Form1 form(m_panel, {});
    test::MessageRecorder messages;
    // The log of an earlier run is not this run's verdict.
    put(QStringLiteral("E:\\UPDLOG.TXT"), "Nothing to update\r\n");
    form.Image15_Click();
    EXPECT_EQ(messages.texts, QStringList({ QStringLiteral("¡Error al actualizar!") }));
    EXPECT_TRUE(form.isEnabled());
}

TEST_F(UpdateTest, ProgressFormStaysUsableWhileThePanelIsDisabled)
{
    Form1 form(m_panel, {});
    test::MessageRecorder messages;
    fakeUpdater("Nothing to update\\r\\n");
    // What the progress form offers while the update runs, seen from the pump.
    QList<bool> cancelUsable;
    QList<bool> panelEnabled;
    SetPumpHook([&] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (w->objectName() == QLatin1String("BarraUpdate") && w->isVisible()) {
                auto* cancel = w->findChild<QPushButton*>(QStringLiteral("Command1"));
                cancelUsable << (cancel && cancel->isEnabled());
                panelEnabled << form.isEnabled();
            }
        }
    });
    // The second run reuses the form: disabling the panel must not grey it out.
    form.Image15_Click();
    form.Image15_Click();
    SetPumpHook({});
    ASSERT_FALSE(cancelUsable.isEmpty());
    EXPECT_FALSE(cancelUsable.contains(false));
    EXPECT_FALSE(panelEnabled.contains(true));
    EXPECT_EQ(messages.texts.size(), 2);
}

namespace
{
// A signature container of `version` holding one signature, built as a mirror would.
QByteArray buildContainer(int version)
{
    QTemporaryDir stage;
    test::writeFile(stage.filePath(QStringLiteral("vormak.ndb")),
        "Vmk.Test.PanelUpdate-" + QByteArray::number(version) + ":0:*:" + QByteArray("VMK-PANEL-UPDATE").toHex()
            + "\n");
    test::writeFile(stage.filePath(QStringLiteral("COPYING")), "test\n");
    test::writeFile(stage.filePath(QStringLiteral("builder.txt")), "test\n");
    QProcess p;
    p.setWorkingDirectory(stage.path());
    p.setStandardInputFile(stage.filePath(QStringLiteral("builder.txt")));
    p.start(QStringLiteral("sigtool"),
        { QStringLiteral("--unsigned"), QStringLiteral("--build=vormak.cud"),
            QStringLiteral("--cvd-version=") + QString::number(version), QStringLiteral("--datadir=") + stage.path() });
    p.waitForFinished(60000);
    return test::readFile(stage.filePath(QStringLiteral("vormak.cud")));
}
} // namespace

TEST_F(UpdateTest, RealUpdaterAgainstALocalSource)
{
    const QString bin = test::binDir();
    if (!QFileInfo(bin + QStringLiteral("/avupdate.exe")).isExecutable())
        GTEST_SKIP() << "avupdate.exe is not built";
    const QString program = native(m_programFolder);
    ASSERT_TRUE(QFile::copy(bin + QStringLiteral("/avupdate.exe"), program + QStringLiteral("/avupdate.exe")));
    QFile::setPermissions(
        program + QStringLiteral("/avupdate.exe"), QFile::permissions(bin + QStringLiteral("/avupdate.exe")));
    QDir().mkpath(program + QStringLiteral("/sigs"));
    const QByteArray original = test::readFile(bin + QStringLiteral("/sigs/vormak.cud"));
    ASSERT_FALSE(original.isEmpty());
    test::writeFile(program + QStringLiteral("/sigs/vormak.cud"), original);
    const QString source = m_host.filePath(QStringLiteral("mirror"));
    test::writeFile(source + QStringLiteral("/vormak.cud"), original);
    put(m_programFolder + QStringLiteral("\\avupdate.conf"),
        "source=" + source.toUtf8() + "\r\nfiles=vormak.cud\r\ntimeout=30\r\n");

    // The engine runs from the program folder, as start-up leaves it.
    QDir::setCurrent(program);
    ASSERT_EQ(engine::LoadEngine(), 0);
    Form1 form(m_panel, {});
    form.label("Label9")->setText(m_panel.EngineVersionText());
    form.label("Label10")->setText(m_panel.EngineCountText());
    const QString oldCount = form.label("Label10")->text();
    test::MessageRecorder messages;

    form.Image15_Click();
    EXPECT_EQ(messages.texts, QStringList({ QStringLiteral("¡Nada que actualizar!") }));
    EXPECT_TRUE(QFileInfo::exists(native(QStringLiteral("E:\\UPDLOG.TXT"))));

    const QByteArray v2 = buildContainer(2);
    ASSERT_FALSE(v2.isEmpty());
    test::writeFile(source + QStringLiteral("/vormak.cud"), v2);
    messages.texts.clear();
    messages.script({ 6 });
    form.Image15_Click();
    EXPECT_EQ(
        messages.texts, QStringList({ QStringLiteral("¿Las firmas fueron actualizadas, desea reiniciar el motor?") }));
    EXPECT_EQ(test::readFile(program + QStringLiteral("/sigs/vormak.cud")), v2);
    // The restarted engine reports the new set: one signature, and today's date.
    EXPECT_EQ(form.label("Label10")->text(), QStringLiteral("1"));
    EXPECT_NE(form.label("Label10")->text(), oldCount);
    EXPECT_EQ(form.label("Label8")->text(), SignatureDate::CaptionFromDate(QDate::currentDate()));
    engine::UnLoadEngine();
}
