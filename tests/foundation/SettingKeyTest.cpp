#include "FoundationFixture.h"

#include "foundation/SettingKey.h"
#include "foundation/Settings.h"

#include "TestSupport.h"

#include <QSet>

using namespace vmk;

namespace
{
QStringList namesBy(int SettingKey::*order)
{
    QStringList out;
    for (const SettingKey* k : SettingKeysBy(order))
        out << QString::fromLatin1(k->Name);
    return out;
}

// The places of one order are 1, 2, 3, ... without a gap or a repeat (`skipped` excepted).
void expectContiguous(int SettingKey::*order, int count, int skipped = 0)
{
    QList<int> places;
    for (const SettingKey* k : SettingKeysBy(order))
        places << k->*order;
    QList<int> expected;
    for (int i = 1; i <= count; ++i) {
        if (i != skipped)
            expected << i;
    }
    EXPECT_EQ(places, expected);
}
} // namespace

using SettingKeyTest = FoundationFixture;

// The table read from the side of each of its users: the file's reader and both
// writers, the engine binding and the settings dialog.
TEST_F(SettingKeyTest, EveryUserReadsOneConsistentTable)
{
    test::MessageRecorder messages;
    QSet<QString> names;
    QSet<QString> controls;
    for (const SettingKey& k : SettingKeys()) {
        const QString name = QString::fromLatin1(k.Name);
        EXPECT_FALSE(names.contains(name)) << k.Name;
        names << name;
        EXPECT_EQ(FindSettingKey(name), &k);
        EXPECT_EQ(FindSettingKey(name.toLower()), nullptr) << "keys are case-sensitive";
        EXPECT_FALSE(k.TextVariable && k.IntVariable) << k.Name;
        // A key the reader stores has a variable; a key it keeps on reload is one it reads.
        if (k.ReadAtStart) {
            EXPECT_NE(k.form(), SettingForm::None) << k.Name;
        }
        EXPECT_TRUE(!k.KeptOnReload || k.ReadAtStart) << k.Name;
        // Integer defaults are numbers in every language.
        if (k.form() == SettingForm::Int16) {
            EXPECT_TRUE(k.defaultFor(0)->toInt() || *k.defaultFor(0) == "0") << k.Name;
        }
        // The engine takes its options as the plain text of the file.
        if (k.EngineOrder > 0) {
            EXPECT_FALSE(k.sealed()) << k.Name;
            EXPECT_EQ(k.form(), SettingForm::Text) << k.Name;
        }
        // The dialog: a control on a page, bound in a way that fits the variable.
        if (k.DialogOrder > 0) {
            EXPECT_NE(k.DialogFrame, nullptr) << k.Name;
            ASSERT_NE(k.DialogControls[0], nullptr) << k.Name;
            for (const char* c : k.DialogControls) {
                if (!c)
                    continue;
                EXPECT_FALSE(controls.contains(QString::fromLatin1(c))) << c;
                controls << QString::fromLatin1(c);
            }
            const bool numeric = k.Binding == DialogBinding::CheckNumber || k.Binding == DialogBinding::ListIndex
                || k.Binding == DialogBinding::Int16Text;
            EXPECT_EQ(numeric, k.form() == SettingForm::Int16) << k.Name;
            EXPECT_EQ(k.Binding == DialogBinding::OptionGroup, k.DialogControls[1] != nullptr) << k.Name;
        } else {
            EXPECT_EQ(k.Binding, DialogBinding::None) << k.Name;
        }
    }
    EXPECT_EQ(names.size(), 40);
    expectContiguous(&SettingKey::DefaultOrder, 37);
    expectContiguous(&SettingKey::SaveOrder, 38);
    expectContiguous(&SettingKey::EngineOrder, 18, 11); // the eleventh call is option 41, which has no key
    expectContiguous(&SettingKey::DialogOrder, 28);
    EXPECT_EQ(
        namesBy(&SettingKey::DialogOrder).mid(0, 3), QStringList({ "ArchiveScan", "ArchiveMaxSize", "ScanTimeout" }));

    // Every key either writer puts in the file is one the reader knows.
    ReadSettings();
    ASSERT_TRUE(WriteDefaultSettings());
    QStringList written;
    for (const QByteArray& line : test::readFile(m_root + "/VMK.cnf").split('\n')) {
        if (!line.isEmpty())
            written << QString::fromUtf8(line.left(line.indexOf('=')));
    }
    EXPECT_EQ(written, namesBy(&SettingKey::DefaultOrder));
    ASSERT_TRUE(WriteSettings());
    written.clear();
    for (const QByteArray& line : test::readFile(m_root + "/VMK.cnf").split('\n')) {
        if (!line.isEmpty())
            written << QString::fromUtf8(line.left(line.indexOf('=')));
    }
    EXPECT_EQ(written, namesBy(&SettingKey::SaveOrder));
    for (const QString& name : written)
        EXPECT_NE(FindSettingKey(name), nullptr) << name.toStdString();

    // Every variable the reader stores comes back through a save and a read as it was.
    int n = 1;
    for (const SettingKey& k : SettingKeys()) {
        if (k.TextVariable)
            S().*k.TextVariable = QStringLiteral("v%1 = \\x\\").arg(n++);
        if (k.IntVariable)
            S().*k.IntVariable = n++;
    }
    const SettingsValues saved = S();
    ASSERT_TRUE(WriteSettings());
    S() = SettingsValues {};
    ReadSettings();
    for (const SettingKey& k : SettingKeys()) {
        if (!k.ReadAtStart || k.SaveOrder == 0)
            continue;
        EXPECT_EQ(k.clearText(S()), k.clearText(saved)) << k.Name;
    }
    EXPECT_TRUE(messages.texts.isEmpty());
}
