#pragma once

#include "filemanager/FileTreeModel.h"
#include "filemanager/SelectionMarks.h"
#include "filemanager/ui/SmartTree.h"
#include "filemanager/ui/frmDataTree.h"
#include "foundation/Globals.h"
#include "foundation/Settings.h"

#include "TestSupport.h"
#include "TreeDrives.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace vmk::test
{

// The file manager over a temporary host drive C: (desktop "C:\Escritorio") and
// device E:, with the configured folders of the defaults made on the device, the
// program folder E:\VMK and a private trash.
class DataTreeFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_settings = S();
        m_globals = G();
        m_drives = std::make_unique<TreeDrives>();
        m_oldData = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_data.path()));
        G().ProgramFolder = QStringLiteral("E:\\VMK");
        QDir().mkpath(device("VMK"));
        {
            MessageRecorder quiet;
            ReadSettings(); // a fresh device: the defaults, written to E:\VMK\VMK.cnf
        }
        S().CompFileFolder = QStringLiteral("\\Documentos Comprimidos\\");
        S().EncriptFileFolder = QStringLiteral("\\Documentos Encriptados\\");
        S().QuarenteneFolder = QStringLiteral("\\Mis Documentos\\Cuarentena\\");
        S().DeleteFilesMode = QStringLiteral("0");
        S().ScanFilesOperations = QStringLiteral("0");
        G().ProgramFolder = QStringLiteral("E:\\VMK");
        for (const char* folder :
            { "VMK", "Documentos Comprimidos", "Documentos Encriptados", "Mis Documentos/Cuarentena" })
            QDir().mkpath(device(folder));
    }
    void TearDown() override
    {
        m_form.reset();
        m_drives.reset();
        if (m_oldData.isEmpty())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", m_oldData);
        S() = m_settings;
        G() = m_globals;
    }

    QString host(const QString& relative) const { return m_drives->host() + u'/' + relative; }
    QString device(const QString& relative) const { return m_drives->device() + u'/' + relative; }

    // Opens the form as the panel does and fills its trees.
    void open()
    {
        m_form = std::make_unique<frmDataTree>();
        m_form->Form_Load();
        m_form->show();
        m_form->Timer1_Timer();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_form.get()));
    }
    SmartTree& hostTree() { return *m_form->SmartDataTree(); }
    SmartTree& deviceTree() { return *m_form->SmartUIFlash(); }

    // Opens every folder on the way to `key`, so that its node is in the tree.
    static void reveal(SmartTree& tree, const QString& key)
    {
        for (qsizetype i = key.indexOf(u'\\'); i >= 0 && i < key.size() - 1; i = key.indexOf(u'\\', i + 1)) {
            const QString prefix = key.left(i + 1);
            if (tree.treeModel()->NodeExists(prefix))
                tree.Expand(prefix);
        }
    }
    static QPoint centreOf(SmartTree& tree, const QString& key)
    {
        reveal(tree, key);
        const QModelIndex index = tree.treeModel()->indexOf(key);
        EXPECT_TRUE(index.isValid()) << key.toStdString();
        tree.scrollTo(index);
        return tree.visualRect(index).center();
    }
    static void click(SmartTree& tree, const QString& key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, modifiers, centreOf(tree, key));
    }
    // A right click on a node: the popup rule runs and the menu comes up.
    void rightClick(SmartTree& tree, const QString& key)
    {
        QTest::mouseClick(tree.viewport(), Qt::RightButton, Qt::NoModifier, centreOf(tree, key));
        EXPECT_EQ(tree.SelectedKey(), key);
        m_form->menu()->hide();
    }
    // Clicks a menu item; its verb runs once the menu is gone.
    void choose(const char* item)
    {
        QAction* action = m_form->item(QLatin1String(item));
        ASSERT_NE(action, nullptr) << item;
        ASSERT_TRUE(action->isVisible() && action->isEnabled()) << item;
        action->trigger();
        QCoreApplication::processEvents();
    }
    // The verbs (no separators) the menu offers now.
    QStringList offered() const
    {
        QStringList names;
        for (QAction* a : m_form->menu()->actions())
            if (!a->isSeparator() && a->isVisible())
                names << a->objectName();
        return names;
    }
    // A node of `from` dragged onto `onto` at `targetKey` ("" for blank space), as
    // the platform delivers it to the view; returns the drag popup that came up.
    QString drop(SmartTree& from, const QString& key, SmartTree& onto, const QString& targetKey)
    {
        QTest::mousePress(from.viewport(), Qt::LeftButton, Qt::NoModifier, centreOf(from, key));
        QTest::mouseRelease(from.viewport(), Qt::LeftButton, Qt::NoModifier, centreOf(from, key));
        const QPoint at = targetKey.isEmpty() ? QPoint(5, onto.viewport()->height() - 5) : centreOf(onto, targetKey);
        QMimeData data;
        data.setData(SmartTree::nodeMimeType(), (from.objectName() + u'\n' + key).toUtf8());
        QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(onto.viewport(), &enter);
        QDragMoveEvent over(at, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(onto.viewport(), &over);
        EXPECT_EQ(onto.DropHighlight(), targetKey);
        QDropEvent dropped(QPointF(at), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(onto.viewport(), &dropped);
        QCoreApplication::processEvents(); // the popup comes up after the drop
        QString shown;
        for (const char* name : { "MenuDrag", "MenuDragEnc", "MenuDragDec", "MenuDragZip", "MenuDragUzip" }) {
            QMenu* menu = m_form->dragMenu(QLatin1String(name));
            if (menu->isVisible()) {
                shown = QLatin1String(name);
                menu->hide();
            }
        }
        return shown;
    }

    // Lets the ticks run until the verb's items are all done.
    void settle()
    {
        for (int i = 0; i < 20000 && (m_form->TimerF()->isActive() || m_form->TimerD()->isActive() || m_form->busy());
             ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    // Copy (or Cut) `key` of one tree, then the paste verb `verb` on `target` of the other.
    void paste(SmartTree& from, const QString& key, bool cut, SmartTree& onto, const QString& target, const char* verb)
    {
        rightClick(from, key);
        choose(cut ? "Cut" : "Copy");
        rightClick(onto, target);
        EXPECT_TRUE(offered().contains(QLatin1String(verb))) << verb << " on " << target.toStdString();
        choose(verb);
        settle();
    }

    std::unique_ptr<TreeDrives> m_drives;
    std::unique_ptr<frmDataTree> m_form;
    QTemporaryDir m_data;
    QByteArray m_oldData;
    SettingsValues m_settings;
    Globals m_globals;
};

} // namespace vmk::test
