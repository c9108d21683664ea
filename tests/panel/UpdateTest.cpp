#include "DeviceFixture.h"

#include "components/engine/Engine.h"
#include "foundation/Globals.h"
#include "panel/ControlPanel.h"
#include "panel/SignatureDate.h"
#include "panel/ui/Form1.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>

using namespace vmk;
using namespace vmk::panel;

class UpdateTest : public test::DeviceFixture {
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
    fakeUpdater(QByteArray());  // no log at all
    form.Image15_Click();
    fakeUpdater("");  // an empty log
    form.Image15_Click();
    fakeUpdater("Update finished\\r\\n\\r\\n");  // a trailing empty line: silent
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
    EXPECT_EQ(messages.texts, QStringList({ QStringLiteral("¿Las firmas fueron actualizadas, desea reiniciar el motor?") }));
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
    form.Image15_Click();
    EXPECT_EQ(messages.texts, QStringList({ QStringLiteral("¡Error al actualizar!") }));
    EXPECT_TRUE(form.isEnabled());
}
