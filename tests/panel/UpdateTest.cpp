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
    // An updater that writes the given log text and, when asked, a new index,
    // and ends with `exitCode`.
    void fakeUpdater(const QByteArray& log, const QDate& newIndex = QDate(), int exitCode = 0)
    {
        QByteArray body = "printf '%s' \"$*\" > '" + m_host.filePath(QStringLiteral("args.txt")).toUtf8() + "'\n";
        const QString logPath = native(QStringLiteral("E:\\UPDLOG.TXT"));
        QFile::remove(logPath);
        if (!log.isNull())
            body += "printf '" + log + "' > '" + logPath.toUtf8() + "'\n";
        if (newIndex.isValid())
            body += "printf '" + indexLine(newIndex).trimmed() + "\\r\\n' > '"
                + native(m_programFolder + QStringLiteral("\\idx\\master.idx")).toUtf8() + "'\n";
        body += "exit " + QByteArray::number(exitCode) + "\n";
        putScript(m_programFolder + QStringLiteral("\\avupdate.exe"), body);
    }
    QString args() const { return QString::fromUtf8(test::readFile(m_host.filePath(QStringLiteral("args.txt")))); }

    // The built avupdate.exe in the program folder, with the built signature set
    // in its sigs; returns that set, or nothing when the build has none.
    QByteArray installRealUpdater()
    {
        const QString bin = test::binDir();
        const QByteArray set = test::readFile(bin + QStringLiteral("/sigs/vormak.cud"));
        if (!QFileInfo(bin + QStringLiteral("/avupdate.exe")).isExecutable() || set.isEmpty())
            return QByteArray();
        const QString program = native(m_programFolder);
        QFile::copy(bin + QStringLiteral("/avupdate.exe"), program + QStringLiteral("/avupdate.exe"));
        QFile::setPermissions(
            program + QStringLiteral("/avupdate.exe"), QFile::permissions(bin + QStringLiteral("/avupdate.exe")));
        test::writeFile(program + QStringLiteral("/sigs/vormak.cud"), set);
        return set;
    }

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
    fakeUpdater("Checking\\r\\nUpdate error: source folder missing\\r\\n", QDate(), 1);
    form.Image15_Click();
    fakeUpdater(QByteArray()); // no log at all
    form.Image15_Click();
    fakeUpdater(""); // an empty log
    form.Image15_Click();
    fakeUpdater("Update finished\\r\\n\\r\\n"); // a trailing empty line: silent
    form.Image15_Click();
    fakeUpdater("Something else\\r\\n");
    form.Image15_Click();
    // A failing updater whose last line holds the success words.
    fakeUpdater("Update finished\\r\\n", QDate(), 1);
    form.Image15_Click();
    EXPECT_EQ(messages.texts,
        QStringList({ QStringLiteral("¡Nada que actualizar!"), QStringLiteral("¡Error al actualizar!"),
            QStringLiteral("¡Error al actualizar!"), QStringLiteral("¡Error al actualizar!"),
            QStringLiteral("¡Error al actualizar!") }));
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

TEST_F(UpdateTest, ProgramFolderHoldingAQuoteReachesTheUpdaterWhole)
{
    // A quote in the program folder's name once split the updater's command line
    // and ran nothing (or another program).
    m_programFolder = QStringLiteral("E:\\V\"MK\" --log=x");
    G().ProgramFolder = m_programFolder;
    ASSERT_TRUE(QDir().mkpath(native(m_programFolder)));
    putScript(m_programFolder + QStringLiteral("\\avupdate.exe"),
        "printf '%s\\n' \"$#\" \"$@\" > '" + m_host.filePath(QStringLiteral("args.txt")).toUtf8()
            + "'\n"
              "printf 'Nothing to update\\r\\n' > '"
            + native(QStringLiteral("E:\\UPDLOG.TXT")).toUtf8() + "'\n");
    EXPECT_EQ(m_panel.RunUpdater(), UpdateVerdict::NothingToUpdate);
    EXPECT_EQ(args(), QStringLiteral("2\n--config=avupdate.conf\n--log=E:\\UPDLOG.TXT\n"));
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
    const QByteArray original = installRealUpdater();
    if (original.isEmpty())
        GTEST_SKIP() << "avupdate.exe or its signatures are not built";
    const QString program = native(m_programFolder);
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

TEST_F(UpdateTest, RealUpdaterFailingWithTheSuccessWordsInItsTextIsAnError)
{
    const QByteArray original = installRealUpdater();
    if (original.isEmpty())
        GTEST_SKIP() << "avupdate.exe or its signatures are not built";
    const QString program = native(m_programFolder);
    Form1 form(m_panel, {});
    form.label("Label8")->setText(QStringLiteral("-----"));
    test::MessageRecorder messages;

    // A source named as the success line, holding no signatures: the error line names it.
    const QString named = m_host.filePath(QStringLiteral("Update finished"));
    QDir().mkpath(named);
    put(m_programFolder + QStringLiteral("\\avupdate.conf"), "source=" + named.toUtf8() + "\r\nfiles=vormak.cud\r\n");
    form.Image15_Click();
    // A source whose name holds a carriage return before the success words.
    const QString broken = m_host.filePath(QStringLiteral("mirror\rUpdate finished"));
    QDir().mkpath(broken);
    put(m_programFolder + QStringLiteral("\\avupdate.conf"), "source=" + broken.toUtf8() + "\r\nfiles=vormak.cud\r\n");
    form.Image15_Click();

    EXPECT_EQ(messages.texts,
        QStringList({ QStringLiteral("¡Error al actualizar!"), QStringLiteral("¡Error al actualizar!") }));
    // Each entry of the log stays one line, so the name cannot pose as the last line.
    const QByteArray log = test::readFile(native(QStringLiteral("E:\\UPDLOG.TXT")));
    ASSERT_TRUE(log.endsWith("\r\n"));
    QList<QByteArray> lines = log.split('\n');
    lines.removeLast(); // after the final line break
    for (const QByteArray& line : lines)
        EXPECT_EQ(line.indexOf('\r'), line.size() - 1) << line.constData();
    const QString last = QString::fromUtf8(lines.last()).trimmed();
    EXPECT_TRUE(SignatureUpdate::LogMessage(last).startsWith(QStringLiteral("Update error: "))) << last.toStdString();
    EXPECT_TRUE(last.contains(QStringLiteral("Update finished")));
    // The installed set and the panel's data are untouched.
    EXPECT_EQ(test::readFile(program + QStringLiteral("/sigs/vormak.cud")), original);
    EXPECT_EQ(form.label("Label8")->text(), QStringLiteral("-----"));
    EXPECT_TRUE(form.isEnabled());
}
