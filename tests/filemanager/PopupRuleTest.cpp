#include "filemanager/PopupRule.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"

#include <gtest/gtest.h>

using namespace vmk;

namespace
{

// The configured folders as the defaults have them, on program drive E:.
class PopupRuleTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_drive = G().ProgramDrive;
        m_settings = S();
        G().ProgramDrive = QStringLiteral("E:");
        S().CompFileFolder = QStringLiteral("\\Documentos Comprimidos\\");
        S().EncriptFileFolder = QStringLiteral("\\Documentos Encriptados\\");
        S().QuarenteneFolder = QStringLiteral("\\Mis Documentos\\Cuarentena\\");
    }
    void TearDown() override
    {
        G().ProgramDrive = m_drive;
        S() = m_settings;
    }
    // The items shown, in a fixed order, for one popup.
    static QStringList shown(const PopupRule::Input& in)
    {
        const QHash<QString, bool> items = PopupRule::Decide(in);
        QStringList names;
        for (const char* n : { "OpenF", "linea", "Copy", "Cut", "Paste", "PasteEncript", "PasteDecript", "pasteZ",
                 "PasteUz", "linea2", "Delete", "Rename", "NewFolder", "Linea1", "Properties", "linea4", "Restaura" })
            if (items.value(QLatin1String(n)))
                names << QLatin1String(n);
        return names;
    }
    static PopupRule::Input input(
        int side, const QString& key, const QString& source = QString(), int marks = 0, int clipboard = 0)
    {
        PopupRule::Input in;
        in.side = side;
        in.key = key;
        in.sourcePath = source;
        in.marks = marks;
        in.clipboard = clipboard;
        return in;
    }

    QString m_drive;
    SettingsValues m_settings;
};

} // namespace

TEST_F(PopupRuleTest, OneNodeOnEitherTree)
{
    // A file: open, no new folder; on the host tree the separator follows open.
    EXPECT_EQ(shown(input(2, "C:\\x\\a.txt")),
        QStringList({ "OpenF", "linea", "Copy", "Cut", "Delete", "Rename", "Linea1", "Properties" }));
    EXPECT_EQ(shown(input(1, "E:\\a.txt")),
        QStringList({ "OpenF", "Copy", "Cut", "Delete", "Rename", "Linea1", "Properties" }));
    // The device tree leaves "linea" as it was: the answer does not name it.
    EXPECT_FALSE(PopupRule::Decide(input(1, "E:\\a.txt")).contains(QStringLiteral("linea")));
    // A folder: new folder, no open.
    EXPECT_EQ(shown(input(2, "|C:\\Escritorio\\sub\\")),
        QStringList({ "Copy", "Cut", "Delete", "Rename", "NewFolder", "Linea1", "Properties" }));
    EXPECT_EQ(shown(input(1, "E:\\sub\\")),
        QStringList({ "Copy", "Cut", "Delete", "Rename", "NewFolder", "Linea1", "Properties" }));
    // With an empty clipboard and no SourcePath no paste verb shows.
    for (const char* name : { "Paste", "PasteEncript", "PasteDecript", "pasteZ", "PasteUz" })
        EXPECT_FALSE(PopupRule::Decide(input(1, "E:\\sub\\")).value(QLatin1String(name))) << name;
}

TEST_F(PopupRuleTest, MarkedSetsOfferNeitherOpenRenamePropertiesNewFolderNorPaste)
{
    const QHash<QString, bool> items = PopupRule::Decide(input(1, "E:\\sub\\", "C:\\x\\a.txt", 3, 2));
    for (const char* name : { "OpenF", "Rename", "Properties", "NewFolder", "linea", "Linea1", "linea2", "Restaura",
             "Paste", "PasteEncript", "PasteDecript", "pasteZ", "PasteUz" })
        EXPECT_FALSE(items.value(QLatin1String(name))) << name;
    EXPECT_EQ(shown(input(2, "C:\\x\\", "C:\\x\\a.txt", 2)), QStringList({ "Copy", "Cut", "Delete" }));
}

TEST_F(PopupRuleTest, PasteVerbFollowsTheTargetFolderThenTheSourceFolder)
{
    const QString plain = QStringLiteral("C:\\x\\a.txt");
    // Target in the compressed folder: compress, on either tree, whatever the source.
    EXPECT_TRUE(shown(input(1, "E:\\Documentos Comprimidos\\", plain)).contains("pasteZ"));
    EXPECT_TRUE(
        shown(input(2, "E:\\DOCUMENTOS COMPRIMIDOS\\sub\\", "E:\\Documentos Encriptados\\s.bin")).contains("pasteZ"));
    // Target in the encrypted or the quarantine folder: encrypt.
    EXPECT_TRUE(shown(input(1, "E:\\Documentos Encriptados\\", plain)).contains("PasteEncript"));
    EXPECT_TRUE(shown(input(2, "E:\\Mis Documentos\\Cuarentena\\", plain)).contains("PasteEncript"));
    // Source in the compressed folder: decompress.
    EXPECT_TRUE(shown(input(2, "C:\\x\\", "E:\\Documentos Comprimidos\\a.txt")).contains("PasteUz"));
    // Source in the encrypted or quarantine folder: decrypt; anything else: plain paste.
    EXPECT_TRUE(shown(input(2, "C:\\x\\", "E:\\Documentos Encriptados\\a.txt")).contains("PasteDecript"));
    EXPECT_TRUE(shown(input(1, "E:\\sub\\", "E:\\Mis Documentos\\Cuarentena\\q.bin")).contains("PasteDecript"));
    EXPECT_TRUE(shown(input(1, "E:\\sub\\", plain)).contains("Paste"));
    // Exactly one paste verb, also when only the clipboard holds items.
    const QStringList one = shown(input(1, "E:\\sub\\", QString(), 0, 2));
    EXPECT_EQ(one.filter(QStringLiteral("aste")), QStringList({ "Paste" }));
    // The folders count only on the program drive: the same folder on C: is plain.
    EXPECT_TRUE(shown(input(2, "C:\\Documentos Comprimidos\\", plain)).contains("Paste"));
    EXPECT_TRUE(shown(input(2, "C:\\x\\", "C:\\Documentos Encriptados\\a.txt")).contains("Paste"));
    // A key with the desktop bar does not begin with the drive: plain paste.
    EXPECT_TRUE(shown(input(2, "|E:\\Documentos Comprimidos\\", plain)).contains("Paste"));
}

TEST_F(PopupRuleTest, RestoreOnlyInsideTheQuarantineFolderOfTheDeviceTree)
{
    EXPECT_TRUE(shown(input(1, "E:\\Mis Documentos\\Cuarentena\\q.bin")).contains("Restaura"));
    EXPECT_TRUE(shown(input(1, "e:\\mis documentos\\cuarentena\\q.bin")).contains("linea4"));
    // The folder's own node does not offer it, nor any node of the host tree.
    EXPECT_FALSE(shown(input(1, "E:\\Mis Documentos\\Cuarentena\\")).contains("Restaura"));
    EXPECT_FALSE(shown(input(2, "E:\\Mis Documentos\\Cuarentena\\q.bin")).contains("Restaura"));
    EXPECT_FALSE(shown(input(1, "E:\\Mis Documentos\\q.bin")).contains("Restaura"));
    // An unset quarantine folder offers it nowhere.
    S().QuarenteneFolder.clear();
    EXPECT_FALSE(shown(input(1, "E:\\a.bin")).contains("Restaura"));
}

TEST_F(PopupRuleTest, DragPopupByTargetThenSource)
{
    const QString plain = QStringLiteral("C:\\x\\a.txt");
    EXPECT_EQ(PopupRule::DragMenu("E:\\Documentos Comprimidos\\", plain), "MenuDragZip");
    EXPECT_EQ(PopupRule::DragMenu("E:\\Documentos Encriptados\\sub\\", plain), "MenuDragEnc");
    EXPECT_EQ(PopupRule::DragMenu("C:\\x\\", "E:\\Documentos Comprimidos\\a.txt"), "MenuDragUzip");
    EXPECT_EQ(PopupRule::DragMenu("C:\\x\\", "E:\\Documentos Encriptados\\a.txt"), "MenuDragDec");
    EXPECT_EQ(PopupRule::DragMenu("C:\\x\\", plain), "MenuDrag");
    // From the compressed folder into the encrypted one: the target's test comes first.
    EXPECT_EQ(PopupRule::DragMenu("E:\\Documentos Encriptados\\", "E:\\Documentos Comprimidos\\a.txt"), "MenuDragEnc");
    // The quarantine folder plays no part in drops.
    EXPECT_EQ(PopupRule::DragMenu("E:\\Mis Documentos\\Cuarentena\\", plain), "MenuDrag");
    EXPECT_EQ(PopupRule::DragMenu("C:\\x\\", "E:\\Mis Documentos\\Cuarentena\\q.bin"), "MenuDrag");
    // A node dropped on itself.
    EXPECT_EQ(PopupRule::DragMenu("E:\\sub\\", "E:\\sub\\"), "MenuDrag");
}
