#include "FoundationFixture.h"

#include "foundation/WalkGuard.h"

#include "TestSupport.h"

#include <QFile>

using namespace vmk;

using WalkGuardTest = FoundationFixture;

// Every way a deleting walk could be pointed at more than its folder is refused,
// told with the reason, the key and the folder; a real folder below the root passes.
TEST_F(WalkGuardTest, OnlyARealFolderStrictlyBelowTheDeviceRootPasses)
{
    const QString host = QDir(m_dir.path()).canonicalPath() + "/host";
    ASSERT_TRUE(test::writeFile(host + "/Docs/letter.txt", "host document"));
    ASSERT_TRUE(test::writeFile(m_root + "/Mis Documentos/Cuarentena/old.exe", "x"));
    ASSERT_TRUE(QFile::link(host + "/Docs", m_root + "/Away"));
    ASSERT_TRUE(QFile::link(m_root + "/Mis Documentos", m_root + "/Inside"));
    ASSERT_TRUE(QFile::link(host, m_root + "/Hop"));
    ASSERT_TRUE(QFile::link(m_root, m_root + "/Self"));

    const struct {
        const char* folder;
        WalkGuard::Refusal refusal;
    } cases[] = {
        { "", WalkGuard::NoFolder },
        { "E:", WalkGuard::NoFolder },
        { "E:\\", WalkGuard::DeviceRoot },
        { "E:\\\\", WalkGuard::DeviceRoot },
        { "E:\\.\\", WalkGuard::DotComponent },
        { "E:\\Mis Documentos\\..\\", WalkGuard::DotComponent },
        { "E:\\Mis Documentos\\Cuarentena\\..\\..\\", WalkGuard::DotComponent },
        { "E:/Mis Documentos/../", WalkGuard::DotComponent },
        { "C:\\", WalkGuard::OutsideDevice },
        { "C:\\tmp\\", WalkGuard::OutsideDevice },
        { "Mis Documentos\\Cuarentena\\", WalkGuard::OutsideDevice },
        { "E:\\Away\\", WalkGuard::Link },
        { "E:\\Inside\\", WalkGuard::Link },
        { "E:\\Hop\\Docs\\", WalkGuard::OutsideDevice },
        { "E:\\Self\\Mis Documentos\\", WalkGuard::Accepted },
        { "E:\\Never There\\", WalkGuard::Missing },
        { "E:\\Mis Documentos\\Cuarentena\\old.exe", WalkGuard::Missing },
        { "E:\\Mis Documentos\\Cuarentena\\", WalkGuard::Accepted },
        { "E:\\MIS DOCUMENTOS\\cuarentena", WalkGuard::Accepted },
    };
    for (const auto& c : cases) {
        QString native;
        EXPECT_EQ(WalkGuard::check(QString::fromUtf8(c.folder), &native), c.refusal) << c.folder;
        EXPECT_EQ(native.isEmpty(), c.refusal != WalkGuard::Accepted) << c.folder;
    }
    QString native;
    ASSERT_EQ(WalkGuard::check(QStringLiteral("E:\\Mis Documentos\\Cuarentena\\"), &native), WalkGuard::Accepted);
    EXPECT_EQ(native, m_root + "/Mis Documentos/Cuarentena");

    // The program folder is never the walk's, nor any folder that holds it.
    G().ProgramFolder = QStringLiteral("E:\\Mis Documentos\\Cuarentena\\VMK");
    QDir().mkpath(m_root + "/Mis Documentos/Cuarentena/VMK");
    EXPECT_EQ(WalkGuard::check(QStringLiteral("E:\\Mis Documentos\\")), WalkGuard::HoldsProgram);
    EXPECT_EQ(WalkGuard::check(QStringLiteral("E:\\Mis Documentos\\Cuarentena\\VMK\\")), WalkGuard::HoldsProgram);
    EXPECT_EQ(WalkGuard::check(QStringLiteral("E:\\Inside\\Cuarentena\\")), WalkGuard::HoldsProgram);

    // The message names the reason, the key and the folder; a missing folder is
    // left to the panel's own check.
    test::MessageRecorder messages;
    EXPECT_FALSE(WalkGuard::folderForDeletingWalk(QStringLiteral("E:"), QStringLiteral("#QuarenteneFolder")));
    EXPECT_FALSE(WalkGuard::folderForDeletingWalk(QStringLiteral("E:\\Away\\"), QStringLiteral("#QuarenteneFolder")));
    EXPECT_FALSE(WalkGuard::folderForDeletingWalk(QStringLiteral("E:\\Gone\\"), QStringLiteral("#QuarenteneFolder")));
    ASSERT_EQ(messages.texts.size(), 2);
    EXPECT_EQ(
        messages.texts[0], QStringLiteral("¡No hay carpeta indicada, no se borra nada!\r\n#QuarenteneFolder: \"E:\""));
    EXPECT_EQ(messages.texts[1],
        QStringLiteral("¡La carpeta es un enlace, no se borra nada!\r\n#QuarenteneFolder: \"E:\\Away\\\""));
    G().LanguageIndex = 1;
    EXPECT_FALSE(WalkGuard::folderForDeletingWalk(QStringLiteral("E:\\"), QStringLiteral("#QuarenteneFolder")));
    EXPECT_EQ(messages.texts.last(),
        QStringLiteral("The folder is the root of the device, nothing is deleted!\r\n#QuarenteneFolder: \"E:\\\""));
    EXPECT_EQ(test::readFile(host + "/Docs/letter.txt"), QByteArray("host document"));
}
