#include "FoundationFixture.h"

#include "foundation/LanguageFile.h"
#include "foundation/SettingKey.h"
#include "foundation/Settings.h"
#include "foundation/Translate.h"

#include "TestSupport.h"

#include <QFile>

using namespace vmk;

namespace
{
QStringList fileKeys(const QString& path)
{
    QStringList keys;
    for (const QByteArray& line : test::readFile(path).split('\n')) {
        if (!line.isEmpty())
            keys << QString::fromUtf8(line.left(line.indexOf('=')));
    }
    return keys;
}

QString lineOf(const QString& key, const QString& clear)
{
    return key + u'=' + (key.startsWith(u'#') ? SealValue(clear) : clear);
}

void writeLines(const QString& path, const QStringList& lines, const char* eol = "\r\n")
{
    QByteArray out;
    for (const QString& l : lines)
        out += l.toUtf8() + eol;
    ASSERT_TRUE(test::writeFile(path, out));
}

const QStringList kDefaultOrder { "ArchiveScan", "ArchiveMaxSize", "ArchiveMaxRec", "MailboxScan", "HeurMacro",
    "HeurLevel", "ScanTimeout", "Repair", "SavapiNotifyOffice", "SavapiNotifyOfficeMacro", "DetectAdspy", "DetectDial",
    "DetectGame", "DetectJoke", "DetectPck", "DetectPhish", "DetectSpr", "UpdateProxy", "#UpdateProxySettings",
    "#ScanFilesOperations", "#CompFileFolder", "#CompAlgorithm", "#EncriptFileFolder", "#EncripAlgorithm",
    "#DeleteFilesMode", "#UpdateFrom", "#ScanBeforeBackup", "#BackupsFolder", "#BCompAlgorithm",
    "#ScanFilesAfterUpdate", "#QuarenteneFolder", "#DeleteFilesAfter", "#DeleteFilesOpt", "#DesinfectedFolder",
    "#FtpServer", "#FtpUserName", "#FtpPassword" };
} // namespace

using SettingsTest = FoundationFixture;

TEST_F(SettingsTest, MissingFileGetsDefaultsInOrderSealedWithCrLf)
{
    test::MessageRecorder messages;
    ReadSettings();
    const QString path = m_root + "/VMK.cnf";
    EXPECT_EQ(SettingsFilePath(), path);
    ASSERT_TRUE(QFile::exists(path));
    EXPECT_EQ(fileKeys(path), kDefaultOrder);
    const QByteArray raw = test::readFile(path);
    EXPECT_EQ(raw.count("\r\n"), kDefaultOrder.size());
    EXPECT_EQ(raw.count('\n'), kDefaultOrder.size());
    EXPECT_TRUE(raw.contains("UpdateProxy=0\r\n"));
    EXPECT_FALSE(raw.contains("#FtpPassword=\r\n")); // empty values are sealed too
    for (const QByteArray& line : raw.split('\n')) {
        if (line.startsWith('#')) {
            const QByteArray hex = line.mid(line.indexOf('=') + 1).trimmed();
            EXPECT_EQ(hex, hex.toUpper());
            EXPECT_FALSE(hex.isEmpty());
        }
    }
    EXPECT_EQ(S().HeurLevel, QStringLiteral("2"));
    EXPECT_EQ(S().DetectSpr, QStringLiteral("1"));
    EXPECT_EQ(S().QuarenteneFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
    EXPECT_EQ(S().CompFileFolder, QStringLiteral("\\Documentos Comprimidos\\"));
    EXPECT_EQ(S().DeleteFilesAfter, 60);
    EXPECT_EQ(S().DeleteFilesOpt, 1);
    EXPECT_EQ(S().ScanFilesOperations, QStringLiteral("1"));
    EXPECT_TRUE(S().UpdateFrom.isEmpty()); // compared but never applied at start
    EXPECT_TRUE(messages.texts.isEmpty());
    // The sealed form is stable: a second write gives the same bytes.
    WriteDefaultSettings();
    EXPECT_EQ(test::readFile(path), raw);
    // No temporary file is left beside it.
    EXPECT_EQ(QDir(m_root).entryList(QDir::Files | QDir::Hidden), QStringList { "VMK.cnf" });

    G().LanguageIndex = 1;
    WriteDefaultSettings();
    ReadSettings();
    EXPECT_EQ(S().QuarenteneFolder, QStringLiteral("\\My Documents\\Quarentene\\"));
    EXPECT_EQ(S().DesinfectedFolder, QStringLiteral("\\My Documents\\"));
}

TEST_F(SettingsTest, LanguageTwoWritesNoFolderLines)
{
    G().LanguageIndex = 2;
    ReadSettings();
    const QStringList keys = fileKeys(m_root + "/VMK.cnf");
    for (const char* k :
        { "#CompFileFolder", "#EncriptFileFolder", "#BackupsFolder", "#QuarenteneFolder", "#DesinfectedFolder" })
        EXPECT_FALSE(keys.contains(QString::fromLatin1(k))) << k;
    EXPECT_EQ(keys.size(), kDefaultOrder.size() - 5);
    EXPECT_TRUE(S().CompFileFolder.isEmpty());
    EXPECT_TRUE(S().QuarenteneFolder.isEmpty());
    EXPECT_EQ(S().DeleteFilesAfter, 60);
}

TEST_F(SettingsTest, ValuesHoldingEqualsSignsAndBadLines)
{
    test::MessageRecorder messages;
    const QString path = m_root + "/VMK.cnf";
    // Only the first "=" separates, for plain and sealed keys.
    writeLines(path,
        { "ArchiveScan=1=2", lineOf("#FtpPassword", "p=q=r"), lineOf("#FtpServer", "ftp.example.org"), "Unknown=7",
            lineOf("#CompAlgorithm", "3") });
    ReadSettings();
    EXPECT_EQ(S().ArchiveScan, QStringLiteral("1=2"));
    EXPECT_EQ(S().FtpPassword, QStringLiteral("p=q=r"));
    EXPECT_EQ(S().FtpServer, QStringLiteral("ftp.example.org"));
    EXPECT_EQ(S().CompAlgorithm, 3);
    EXPECT_EQ(fileKeys(path).size(), 5); // a good file is left alone
    EXPECT_TRUE(messages.texts.isEmpty());

    // An integer setting that is not a number replaces the whole file by the defaults.
    writeLines(path, { "ArchiveScan=1", lineOf("#CompAlgorithm", "abc"), lineOf("#FtpServer", "lost") });
    ReadSettings();
    EXPECT_EQ(fileKeys(path), kDefaultOrder);
    EXPECT_EQ(S().CompAlgorithm, 0);
    EXPECT_EQ(S().ArchiveScan, QStringLiteral("0"));
    EXPECT_TRUE(S().FtpServer.isEmpty());
    EXPECT_TRUE(messages.texts.isEmpty());

    // A blank line, a line without "=" and an empty file: defaults without a word.
    for (const QStringList& lines :
        { QStringList { "ArchiveScan=1", "", "HeurLevel=3" }, QStringList { "HeurLevel" } }) {
        writeLines(path, lines);
        ReadSettings();
        EXPECT_EQ(fileKeys(path), kDefaultOrder);
        EXPECT_EQ(S().HeurLevel, QStringLiteral("2"));
    }
    ASSERT_TRUE(test::writeFile(path, ""));
    ReadSettings();
    EXPECT_EQ(fileKeys(path), kDefaultOrder);
    EXPECT_TRUE(messages.texts.isEmpty());

    EXPECT_FALSE(ApplySettingLine(QStringLiteral("no separator")));
    EXPECT_TRUE(ApplySettingLine(QStringLiteral("=nothing")));
}

TEST_F(SettingsTest, DamagedSealedValuesFallBackToTheirDefaultsAndNameTheirKeys)
{
    test::MessageRecorder messages;
    const QString path = m_root + "/VMK.cnf";
    QString flipped = SealValue(QStringLiteral("secreto"));
    flipped[4] = flipped[4] == u'A' ? u'B' : u'A';
    QString truncated = SealValue(QStringLiteral("\\Cuarentena\\"));
    truncated.chop(2);
    const auto damagedFile = [&](const QString& ftpPassword, const QString& quarantine) {
        writeLines(path,
            { "ArchiveScan=1", lineOf("#FtpServer", "ftp.example.org"), "#FtpPassword=" + ftpPassword,
                "#QuarenteneFolder=" + quarantine, "#DeleteFilesAfter=" + flipped, lineOf("#DeleteFilesOpt", "0") });
        return test::readFile(path);
    };
    const struct {
        int language;
        QString quarantine;
    } cases[] = { { 0, QStringLiteral("\\Mis Documentos\\Cuarentena\\") },
        { 1, QStringLiteral("\\My Documents\\Quarentene\\") }, { 4, QString() } };
    for (const auto& c : cases) {
        G().LanguageIndex = c.language;
        messages.texts.clear();
        S().FtpPassword = QStringLiteral("left over");
        S().QuarenteneFolder = QStringLiteral("\\left over\\");
        const QByteArray before = damagedFile(flipped, truncated);
        ReadSettings();
        // Each damaged key takes its own first value; the good ones are read as usual.
        EXPECT_EQ(S().FtpPassword, QString()) << c.language;
        EXPECT_EQ(S().QuarenteneFolder, c.quarantine) << c.language;
        EXPECT_EQ(S().DeleteFilesAfter, 60) << c.language;
        EXPECT_EQ(S().ArchiveScan, QStringLiteral("1"));
        EXPECT_EQ(S().FtpServer, QStringLiteral("ftp.example.org"));
        EXPECT_EQ(S().DeleteFilesOpt, 0);
        // One message a key, naming it; nothing is written over the file.
        const QString lead
            = Translate(QStringLiteral("¡Valor dañado en VMK.cnf! Se usa el valor por defecto de la clave:")) + "\r\n";
        if (c.language == 1) {
            EXPECT_EQ(lead, QStringLiteral("Damaged value in VMK.cnf! The default value is used for the key:\r\n"));
        }
        EXPECT_EQ(messages.texts,
            QStringList({ lead + "#FtpPassword", lead + "#QuarenteneFolder", lead + "#DeleteFilesAfter" }));
        EXPECT_EQ(test::readFile(path), before);
    }

    // Values that are no sealed text at all: not hex, odd length, empty, non-UTF-8 bytes.
    G().LanguageIndex = 0;
    for (const QByteArray& bad : { QByteArray("not hex at all"), QByteArray("ABC"), QByteArray(),
             QByteArray("\xff\xfe\x00\x80"), QByteArray(5000, 'F') }) {
        messages.texts.clear();
        ASSERT_TRUE(test::writeFile(path, "#QuarenteneFolder=" + bad + "\r\n#FtpPassword=" + bad + "\r\n"));
        ReadSettings();
        EXPECT_EQ(S().QuarenteneFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
        EXPECT_EQ(messages.texts.size(), 2);
        EXPECT_EQ(test::readFile(path), "#QuarenteneFolder=" + bad + "\r\n#FtpPassword=" + bad + "\r\n");
    }

    // A later save writes the fallen-back values sealed, so the next start reads them without a word.
    damagedFile(flipped, truncated);
    ReadSettings();
    ASSERT_TRUE(WriteSettings());
    messages.texts.clear();
    S() = SettingsValues {};
    ReadSettings();
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_EQ(S().QuarenteneFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
    EXPECT_EQ(S().DeleteFilesAfter, 60);

    // The reload (cancel in the dialog) falls back alike, except for the keys it keeps.
    damagedFile(flipped, truncated);
    messages.texts.clear();
    S().QuarenteneFolder = QStringLiteral("\\Dialog\\");
    S().FtpPassword = QStringLiteral("typed");
    ASSERT_TRUE(ReloadSettings());
    EXPECT_EQ(S().QuarenteneFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
    EXPECT_EQ(S().FtpPassword, QStringLiteral("typed"));
    EXPECT_EQ(messages.texts.size(), 2); // "#FtpPassword" is kept, so it is not read
}

TEST_F(SettingsTest, DefaultsForEachOfTheSevenLanguages)
{
    test::MessageRecorder messages;
    const QString path = m_root + "/VMK.cnf";
    const QStringList folderKeys { "#CompFileFolder", "#EncriptFileFolder", "#BackupsFolder", "#QuarenteneFolder",
        "#DesinfectedFolder" };
    const QStringList spanish { "\\Documentos Comprimidos\\", "\\Documentos Encriptados\\",
        "\\Mis Documentos\\Respaldos\\", "\\Mis Documentos\\Cuarentena\\", "\\Mis Documentos\\" };
    const QStringList english { "\\Compressed Documents\\", "\\Encrypted Documents\\", "\\My Documents\\Backups\\",
        "\\My Documents\\Quarentene\\", "\\My Documents\\" };
    for (int language = 0; language < 7; ++language) {
        QFile::remove(path);
        S() = SettingsValues {};
        G().LanguageIndex = language;
        ReadSettings();
        QStringList expectedKeys = kDefaultOrder;
        if (language >= 2) {
            for (const QString& k : folderKeys)
                expectedKeys.removeAll(k);
        }
        EXPECT_EQ(fileKeys(path), expectedKeys) << language;
        const QStringList folders { S().CompFileFolder, S().EncriptFileFolder, S().BackupsFolder, S().QuarenteneFolder,
            S().DesinfectedFolder };
        EXPECT_EQ(folders, language == 0 ? spanish : language == 1 ? english : QStringList(5, QString())) << language;
        EXPECT_EQ(S().HeurLevel, QStringLiteral("2"));
        EXPECT_EQ(S().DeleteFilesAfter, 60);
        EXPECT_EQ(S().DeleteFilesOpt, 1);
    }
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(SettingsTest, DialogSaveAndReloadKeepTheirDifferences)
{
    test::MessageRecorder messages;
    const QString path = m_root + "/VMK.cnf";
    ReadSettings();
    S().OtherLocation = QStringLiteral("\\\\server\\sigs");
    S().FtpPassword = QStringLiteral("old=pass");
    ASSERT_TRUE(WriteSettings());
    const QStringList keys = fileKeys(path);
    EXPECT_FALSE(keys.contains("UpdateProxy"));
    EXPECT_FALSE(keys.contains("#UpdateProxySettings"));
    EXPECT_TRUE(keys.contains("#OtherLocation"));
    EXPECT_EQ(keys.indexOf("ScanTimeout"), 2);
    // The dialog's 36 lines, then the owner's password verifier and the accepted certificate.
    EXPECT_EQ(keys.size(), 38);
    EXPECT_EQ(keys.mid(36), QStringList({ "OwnerPassCheck", "#FtpCertificate" }));

    // Cancel in the dialog: the five keys keep what the dialog put in memory.
    S().FtpPassword = QStringLiteral("changed");
    S().FtpServer = QStringLiteral("new.server");
    S().FtpUserName = QStringLiteral("ana");
    S().DeleteFilesOpt = 0;
    S().DesinfectedFolder = QStringLiteral("\\Otro\\");
    S().ArchiveScan = QStringLiteral("1");
    S().QuarenteneFolder = QStringLiteral("\\Elsewhere\\");
    S().CompAlgorithm = 2;
    S().OtherLocation = QStringLiteral("x");
    S().UpdateFrom = QStringLiteral("2");
    ASSERT_TRUE(ReloadSettings());
    EXPECT_EQ(S().FtpPassword, QStringLiteral("changed"));
    EXPECT_EQ(S().FtpServer, QStringLiteral("new.server"));
    EXPECT_EQ(S().FtpUserName, QStringLiteral("ana"));
    EXPECT_EQ(S().DeleteFilesOpt, 0);
    EXPECT_EQ(S().DesinfectedFolder, QStringLiteral("\\Otro\\"));
    EXPECT_EQ(S().ArchiveScan, QStringLiteral("0"));
    EXPECT_EQ(S().QuarenteneFolder, QStringLiteral("\\Mis Documentos\\Cuarentena\\"));
    EXPECT_EQ(S().CompAlgorithm, 0);
    EXPECT_EQ(S().OtherLocation, QStringLiteral("\\\\server\\sigs"));
    EXPECT_EQ(S().UpdateFrom, QStringLiteral("2")); // no branch for it in the reload
    // ReadSettings, by contrast, restores all of them.
    ReadSettings();
    EXPECT_EQ(S().FtpPassword, QStringLiteral("old=pass"));
    EXPECT_EQ(S().DeleteFilesOpt, 1);

    // Reload without a file writes the present values first.
    QFile::remove(path);
    S().HeurLevel = QStringLiteral("4");
    ASSERT_TRUE(ReloadSettings());
    EXPECT_EQ(S().HeurLevel, QStringLiteral("4"));
    EXPECT_TRUE(fileKeys(path).contains("#OtherLocation"));
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(SettingsTest, SealRoundTripAndHex)
{
    test::MessageRecorder messages;
    for (const QString& text : { QString(), QStringLiteral("="), QStringLiteral("áéíóú ñÑ ¡¿ çãõ 中文"),
             QStringLiteral("\\Mis Documentos\\Cuarentena\\"), QString(300, u'x') }) {
        const QString hex = SealValue(text);
        ASSERT_FALSE(hex.isEmpty());
        EXPECT_EQ(hex, hex.toUpper());
        EXPECT_EQ(SealValue(text), hex); // deterministic
        EXPECT_EQ(UnsealValue(hex), text);
        EXPECT_EQ(UnsealValue(hex.toLower()), text);
    }
    EXPECT_NE(SealValue("a"), SealValue("b"));
    EXPECT_TRUE(messages.texts.isEmpty());

    EXPECT_EQ(UnsealValue(QStringLiteral("00FF")), QString());
    EXPECT_EQ(UnsealValue(QStringLiteral("not hex at all, not sealed")), QString());
    QString hex = SealValue(QStringLiteral("secreto"));
    hex.chop(2);
    EXPECT_EQ(UnsealValue(hex), QString());
    ASSERT_EQ(messages.texts.size(), 3);
    for (const QString& t : messages.texts)
        EXPECT_EQ(t, QStringLiteral("¡Error de decriptado!\n(2)"));

    EXPECT_EQ(BytesToHex(QByteArray("\x00\x0a\xff\x7f", 4)), QStringLiteral("000AFF7F"));
    EXPECT_EQ(BytesToHex({}), QString());
    EXPECT_EQ(HexToBytes(QStringLiteral("000AFF7F")), QByteArray("\x00\x0a\xff\x7f", 4));
    EXPECT_EQ(HexToBytes(QStringLiteral("0aF")), QByteArray("\x0a\x0f", 2)); // a last single digit alone
    EXPECT_EQ(HexToBytes(QStringLiteral("1Z")), QByteArray("\x01", 1));
}

TEST_F(SettingsTest, LanguageFileGivesTheIndex)
{
    const QString path = m_root + "/Language.cnf";
    EXPECT_EQ(ReadLanguageFile(QStringLiteral("E:\\"), 3), 0); // missing file
    const QStringList names { "[Español]", "[English]", "[Duetsch]", "[Português]", "[Français]", "[Italiano]",
        "[Chinesse]" };
    for (int i = 0; i < names.size(); ++i) {
        ASSERT_TRUE(test::writeFile(path, names[i].toUtf8() + "\r\nrest\r\n"));
        EXPECT_EQ(ReadLanguageFile(QStringLiteral("E:\\")), i);
    }
    ASSERT_TRUE(test::writeFile(path, names[3].toLatin1() + "\r\n")); // the Windows code page
    EXPECT_EQ(ReadLanguageFile(QStringLiteral("E:")), 3);
    for (const char* other : { "[Deutsch]", "[Chinese]", "English", "" }) {
        ASSERT_TRUE(test::writeFile(path, QByteArray(other) + "\r\n"));
        EXPECT_EQ(ReadLanguageFile(QStringLiteral("E:\\"), 4), 4) << other;
    }
}
