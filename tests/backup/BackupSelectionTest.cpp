#include "backup/BackupSelection.h"

#include "TestSupport.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace vmk;
using vmk::test::MessageRecorder;

namespace
{
const QString kRootRefused = QStringLiteral("¡No se puede respaldar toda su PC!");
const QString kUnderException = QStringLiteral("No es posible seleccionar este nodo, hay una excepción existente!");

// The tree as the rules see it: parents by the keys' own grammar, the expanded
// nodes, and what the hooks were asked to do.
class SelectionRules : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_selection.setDeviceRoot(QStringLiteral("E:\\"));
        m_selection.setHooks({
            [this](const QString& key, bool checked) { m_setChecked << key + (checked ? "=1" : "=0"); },
            [](const QString& key) -> QString {
                if (key == QStringLiteral("|HOST|"))
                    return {};
                QString k = key.endsWith(u'\\') ? key.chopped(1) : key;
                const qsizetype cut = k.lastIndexOf(u'\\');
                return cut < 0 ? QStringLiteral("|HOST|") : k.left(cut + 1);
            },
            [this](const QString& key) { return m_expanded.contains(key); },
            [this](const QString& key) { m_reexpanded << key; },
            [this] { ++m_timerStarts; },
        });
    }

    BackupSelection m_selection;
    QStringList m_setChecked, m_expanded, m_reexpanded;
    int m_timerStarts = 0;
};
} // namespace

TEST_F(SelectionRules, TheHostRootIsRefusedAndUntickedByTheTimer)
{
    MessageRecorder messages;
    m_selection.NodeCheck("|HOST|", true);
    EXPECT_EQ(messages.texts, QStringList { kRootRefused });
    EXPECT_EQ(m_selection.NodeToUndo(), QStringLiteral("|HOST|"));
    EXPECT_EQ(m_timerStarts, 1);
    EXPECT_TRUE(m_setChecked.isEmpty()); // not inside the tick's own event
    EXPECT_TRUE(m_selection.ListAdd().isEmpty());
    m_selection.Timer_Timer();
    EXPECT_EQ(m_setChecked, QStringList { "|HOST|=0" });
    EXPECT_TRUE(m_selection.NodeToUndo().isEmpty());
    // The untick from code fires no event; a user's untick of the root records nothing.
    m_selection.NodeCheck("|HOST|", false);
    EXPECT_TRUE(m_selection.ListExc().isEmpty());
}

TEST_F(SelectionRules, TicksAndUnticksKeepTheTwoLists)
{
    MessageRecorder messages;
    // A folder, then a folder below it: the second is covered and adds nothing.
    m_selection.NodeCheck("C:\\Datos\\", true);
    m_selection.NodeCheck("C:\\Datos\\Fotos\\", true);
    EXPECT_EQ(m_selection.ListAdd(), QStringList { "C:\\Datos\\" });
    // Unticking below a ticked folder records an exception; ticking it again takes it out.
    m_selection.NodeCheck("C:\\Datos\\Fotos\\", false);
    m_selection.NodeCheck("C:\\Datos\\b.txt", false);
    EXPECT_EQ(m_selection.ListExc(), QStringList({ "C:\\Datos\\Fotos\\", "C:\\Datos\\b.txt" }));
    m_selection.NodeCheck("C:\\Datos\\Fotos\\", true);
    EXPECT_EQ(m_selection.ListExc(), QStringList { "C:\\Datos\\b.txt" });
    EXPECT_EQ(m_selection.ListAdd(), QStringList { "C:\\Datos\\" });
    // Below an exception nothing can be ticked: the message, and the timer unticks it.
    m_selection.NodeCheck("C:\\Datos\\Fotos\\", false);
    m_selection.NodeCheck("C:\\Datos\\Fotos\\2024\\x.jpg", true);
    EXPECT_EQ(messages.texts, QStringList { kUnderException });
    EXPECT_EQ(m_selection.NodeToUndo(), QStringLiteral("C:\\Datos\\Fotos\\2024\\x.jpg"));
    m_selection.Timer_Timer();
    EXPECT_EQ(m_setChecked, QStringList { "C:\\Datos\\Fotos\\2024\\x.jpg=0" });
    // Unticking inside an exception changes nothing.
    m_selection.NodeCheck("C:\\Datos\\Fotos\\2024\\", false);
    EXPECT_EQ(m_selection.ListExc(), QStringList({ "C:\\Datos\\b.txt", "C:\\Datos\\Fotos\\" }));
    // Unticking the entry itself drops it and the exceptions below it.
    m_selection.NodeCheck("C:\\Datos\\", false);
    EXPECT_TRUE(m_selection.ListAdd().isEmpty());
    EXPECT_TRUE(m_selection.ListExc().isEmpty());
    // An unticked node that nothing covers lands in ListExc all the same.
    m_selection.NodeCheck("C:\\Suelto.txt", false);
    EXPECT_EQ(m_selection.ListExc(), QStringList { "C:\\Suelto.txt" });
}

TEST_F(SelectionRules, ANewEntrySwallowsTheEntriesThatBeginWithItAndNoOthers)
{
    MessageRecorder messages;
    m_selection.NodeCheck("C:\\Datos\\a.txt", true);
    m_selection.NodeCheck("C:\\Datos\\Sub\\", true);
    // Names that differ only in case, and a sibling sharing the beginning of the name.
    m_selection.NodeCheck("C:\\DATOS\\a.txt", true);
    m_selection.NodeCheck("C:\\Datos2\\", true);
    // A bar-keyed node (below the desktop's root) is its path in the lists.
    m_selection.NodeCheck("|C:\\Escritorio\\|", true);
    EXPECT_EQ(m_selection.ListAdd(),
        QStringList(
            { "C:\\Datos\\a.txt", "C:\\Datos\\Sub\\", "C:\\DATOS\\a.txt", "C:\\Datos2\\", "C:\\Escritorio\\" }));
    // Ticking the folder replaces the entries below it, by exact prefix: the
    // case-only twin and the sibling stay.
    m_selection.NodeCheck("C:\\Datos\\", true);
    EXPECT_EQ(
        m_selection.ListAdd(), QStringList({ "C:\\DATOS\\a.txt", "C:\\Datos2\\", "C:\\Escritorio\\", "C:\\Datos\\" }));
    // Exceptions go by prefix too: the twin's exception outlives the folder's entry.
    m_selection.NodeCheck("C:\\Datos\\x\\", false);
    m_selection.NodeCheck("C:\\DATOS\\y\\", false);
    m_selection.NodeCheck("C:\\Datos\\", false);
    EXPECT_TRUE(messages.texts.isEmpty());
    EXPECT_EQ(m_selection.ListExc(), QStringList { "C:\\DATOS\\y\\" });
}

TEST_F(SelectionRules, TheWalkUpStopsBelowTheDeviceRootAndTheTreeIsRebuilt)
{
    MessageRecorder messages;
    // The device root ends the walk up, as "|HOST|" does: an entry for it covers
    // nothing below it, and an exception on it refuses nothing.
    m_selection.NodeCheck("E:\\", true);
    m_selection.NodeCheck("E:\\Docs\\", true);
    EXPECT_EQ(m_selection.ListAdd(), QStringList({ "E:\\", "E:\\Docs\\" }));
    m_selection.NodeCheck("E:\\", false);
    EXPECT_EQ(m_selection.ListAdd(), QStringList { "E:\\Docs\\" }); // an untick removes the entry alone
    EXPECT_TRUE(messages.texts.isEmpty());
    // An expanded node is collapsed and expanded again, so its children take new ticks.
    m_expanded << "C:\\Datos\\";
    m_selection.NodeCheck("C:\\Datos\\", true);
    m_selection.NodeCheck("C:\\Otro\\", true);
    EXPECT_EQ(m_reexpanded, QStringList { "C:\\Datos\\" });
    // Children: below a ticked folder unless excepted, else only when an entry.
    m_selection.NodeCheck("C:\\Datos\\no.txt", false);
    EXPECT_TRUE(m_selection.ChildTick("C:\\Datos\\si.txt", true));
    EXPECT_FALSE(m_selection.ChildTick("C:\\Datos\\no.txt", true));
    EXPECT_TRUE(m_selection.ChildTick("C:\\Otro\\", false));
    EXPECT_FALSE(m_selection.ChildTick("C:\\Nada\\", false));
}
