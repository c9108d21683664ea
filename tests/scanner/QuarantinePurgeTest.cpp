#include "scanner/QuarantinePurge.h"
#include "foundation/ForceDelete.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "foundation/StartUp.h"
#include "platform/DriveMap.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace vmk;

namespace
{
// A device E: with the program in E:\VMK, a user document on it and one on the
// host C:, every file a hundred days old: a purge that strays removes them.
class QuarantinePurge : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_hostDir.isValid());
        ASSERT_TRUE(m_deviceDir.isValid());
        m_host = QDir(m_hostDir.path()).canonicalPath();
        m_device = QDir(m_deviceDir.path()).canonicalPath();
        DriveMap::instance().setTestDrives({ { u'C', m_host }, { u'E', m_device } }, u'E');
        G() = Globals();
        G().ProgramFolder = QStringLiteral("E:\\VMK");
        G().ProgramDrive = QStringLiteral("E:");
        G().SystemFolder = QStringLiteral("C:\\system");
        S() = SettingsValues();
        ASSERT_TRUE(test::writeFile(m_device + "/VMK/Vormak.exe", "program"));
        ASSERT_TRUE(test::writeFile(m_device + "/Mis Documentos/carta.txt", "user document"));
        ASSERT_TRUE(test::writeFile(m_device + "/notas.txt", "user document"));
        ASSERT_TRUE(test::writeFile(m_host + "/Docs/host.txt", "host document"));
        scanner::SetCreationTimeHook([](const QString& native) {
            const int age = native.contains(QStringLiteral("new")) ? 0 : 100;
            return QDateTime::currentDateTimeUtc().addDays(-age);
        });
        // No helper program is run: everything here goes at the plain delete.
        m_runner = SetHelperRunner([this](const QString& program, const QStringList&) { m_helpers << program; });
    }
    void TearDown() override
    {
        SetHelperRunner(m_runner);
        scanner::SetCreationTimeHook({});
        DriveMap::instance().resetToHost();
        G() = Globals();
        S() = SettingsValues();
    }

    // Settings as a start reads them: the defaults of the language, then `edit` on
    // the file's lines, then ReadSettings.
    void readSettingsEdited(const std::function<void(QStringList&)>& edit)
    {
        ASSERT_TRUE(WriteDefaultSettings());
        QStringList lines = QString::fromUtf8(test::readFile(SettingsFilePath())).split(QStringLiteral("\r\n"));
        lines.removeAll(QString());
        edit(lines);
        ASSERT_TRUE(test::writeFile(SettingsFilePath(), (lines.join(QStringLiteral("\r\n")) + "\r\n").toUtf8()));
        S() = SettingsValues();
        ReadSettings();
    }
    static void setQuarantine(QStringList& lines, const QString& clear)
    {
        for (QString& line : lines) {
            if (line.startsWith(QLatin1String("#QuarenteneFolder=")))
                line = QStringLiteral("#QuarenteneFolder=") + SealValue(clear);
        }
    }
    // The start-up purge as the panel runs it.
    int purge() const
    {
        EXPECT_EQ(S().DeleteFilesOpt, 1);
        return scanner::PurgeOldFiles(
            G().ProgramDrive + S().QuarenteneFolder, S().DeleteFilesAfter, QDate::currentDate());
    }
    void expectEverythingSurvives(const char* way) const
    {
        EXPECT_EQ(test::readFile(m_device + "/VMK/Vormak.exe"), QByteArray("program")) << way;
        EXPECT_TRUE(QFile::exists(m_device + "/VMK/VMK.cnf")) << way;
        EXPECT_EQ(test::readFile(m_device + "/Mis Documentos/carta.txt"), QByteArray("user document")) << way;
        EXPECT_EQ(test::readFile(m_device + "/notas.txt"), QByteArray("user document")) << way;
        EXPECT_EQ(test::readFile(m_host + "/Docs/host.txt"), QByteArray("host document")) << way;
    }

    QTemporaryDir m_hostDir;
    QTemporaryDir m_deviceDir;
    QString m_host;
    QString m_device;
    HelperRunner m_runner;
    QStringList m_helpers;
};

bool toldAboutTheKey(const test::MessageRecorder& messages)
{
    return messages.texts.size() == 1 && messages.texts[0].contains(QStringLiteral("#QuarenteneFolder"));
}
} // namespace

// Each way to a quarantine folder that is empty, the root, climbing or off the
// device ends in a refusal that names the key, and nothing of the device or the
// host is removed.
TEST_F(QuarantinePurge, EveryWayToAnEmptyOrStrayFolderIsRefused)
{
    {
        // A fresh device whose Language.cnf names German: its defaults carry no folder keys.
        ASSERT_TRUE(test::writeFile(m_device + "/VMK/Language.cnf", "[Duetsch]\r\n"));
        SettleLanguage();
        ASSERT_EQ(G().LanguageIndex, 2);
        test::MessageRecorder messages;
        ReadSettings();
        ASSERT_TRUE(S().QuarenteneFolder.isEmpty());
        EXPECT_EQ(purge(), 0);
        EXPECT_TRUE(toldAboutTheKey(messages)) << messages.texts.join('|').toStdString();
        expectEverythingSurvives("German defaults");
        QFile::remove(m_device + "/VMK/Language.cnf");
        G().LanguageIndex = 0;
    }
    const struct {
        const char* way;
        std::function<void(QStringList&)> edit;
    } edits[] = {
        { "no #QuarenteneFolder line",
            [](QStringList& l) {
                l.erase(std::remove_if(l.begin(), l.end(),
                            [](const QString& x) { return x.startsWith(QLatin1String("#QuarenteneFolder=")); }),
                    l.end());
            } },
        { "empty value", [](QStringList& l) { setQuarantine(l, QString()); } },
        { "root", [](QStringList& l) { setQuarantine(l, QStringLiteral("\\")); } },
        { "dot", [](QStringList& l) { setQuarantine(l, QStringLiteral("\\.\\")); } },
        { "dot-dot", [](QStringList& l) { setQuarantine(l, QStringLiteral("\\Mis Documentos\\..\\")); } },
        { "climbing off", [](QStringList& l) { setQuarantine(l, QStringLiteral("\\..\\..\\..\\")); } },
        { "program folder", [](QStringList& l) { setQuarantine(l, QStringLiteral("\\VMK\\")); } },
    };
    for (const auto& e : edits) {
        test::MessageRecorder messages;
        readSettingsEdited(e.edit);
        EXPECT_EQ(purge(), 0) << e.way;
        EXPECT_TRUE(toldAboutTheKey(messages)) << e.way << ": " << messages.texts.join('|').toStdString();
        expectEverythingSurvives(e.way);
    }

    // The quarantine folder is a link off the device, or back into it.
    readSettingsEdited([](QStringList&) {});
    const QString quarantine = m_device + "/Mis Documentos/Cuarentena";
    ASSERT_EQ(S().QuarenteneFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
    for (const QString& target : { m_host + "/Docs", m_device + "/Mis Documentos", m_device }) {
        QFile::remove(quarantine);
        ASSERT_TRUE(QFile::link(target, quarantine));
        test::MessageRecorder messages;
        EXPECT_EQ(purge(), 0) << target.toStdString();
        EXPECT_TRUE(toldAboutTheKey(messages)) << messages.texts.join('|').toStdString();
        expectEverythingSurvives("link");
    }
    // A folder off the device, as the coming folder walks may be given one.
    test::MessageRecorder messages;
    EXPECT_EQ(scanner::PurgeOldFiles(QStringLiteral("C:\\Docs\\"), 0, QDate::currentDate()), 0);
    EXPECT_TRUE(toldAboutTheKey(messages));
    expectEverythingSurvives("off the device");
    EXPECT_TRUE(m_helpers.isEmpty());
}

// In a proper quarantine the old files go, through subfolders, and the walk
// never follows a link out of it.
TEST_F(QuarantinePurge, WalkStaysInsideItsFolder)
{
    readSettingsEdited([](QStringList&) {});
    const QString q = m_device + "/Mis Documentos/Cuarentena";
    ASSERT_TRUE(test::writeFile(q + "/old.exe", "x"));
    ASSERT_TRUE(test::writeFile(q + "/new.exe", "x"));
    ASSERT_TRUE(test::writeFile(q + "/sub/deeper/old2.exe", "x"));
    ASSERT_TRUE(test::writeFile(q + "/odd \"q\" ?*.exe", "x"));
    ASSERT_TRUE(QFile::link(m_host + "/Docs", q + "/to host"));
    ASSERT_TRUE(QFile::link(m_device + "/Mis Documentos", q + "/sub/up"));
    ASSERT_TRUE(QFile::link(m_host + "/Docs/host.txt", q + "/file link"));
    test::MessageRecorder messages;
    EXPECT_EQ(purge(), 4);
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('|').toStdString();
    EXPECT_FALSE(QFile::exists(q + "/old.exe"));
    EXPECT_FALSE(QFile::exists(q + "/sub/deeper/old2.exe"));
    EXPECT_FALSE(QFile::exists(q + "/odd \"q\" ?*.exe"));
    EXPECT_FALSE(QFileInfo(q + "/file link").isSymLink()); // the link itself, not its target
    EXPECT_TRUE(QFile::exists(q + "/new.exe"));
    EXPECT_TRUE(QFileInfo(q + "/to host").isSymLink());
    EXPECT_TRUE(QFileInfo(q + "/sub/up").isSymLink());
    expectEverythingSurvives("inside");
}
