#include "PasswordFixture.h"

#include "passwords/OwnerPassword.h"
#include "passwords/ui/FormNewlink.h"
#include "passwords/ui/FrmPass.h"
#include "passwords/ui/PassTree.h"

#include "TestSupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <functional>
#include <memory>

using namespace vmk;
using namespace vmk::passwords;

namespace
{
QStringList records(PswNodes& nodes)
{
    QStringList out;
    for (int i = 1; i <= nodes.Count() - 1; i += 3)
        out << nodes.Text(i) + '|' + nodes.Text(i + 1) + '|' + nodes.Tag(i + 2);
    return out;
}

// Acts on the lock once it is shown modally: types `password`, then accepts
// (or cancels when `password` is null).
void answerLock(std::optional<QString> password)
{
    QTimer::singleShot(0, [password] {
        auto* lock = qobject_cast<FrmPass*>(QApplication::activeModalWidget());
        ASSERT_NE(lock, nullptr);
        if (!password) {
            lock->CMDcancel_Click();
            return;
        }
        lock->Text1()->setText(*password);
        lock->CMDacept_Click();
    });
}
} // namespace

class PassTreeTest : public PasswordFixture
{
protected:
    void SetUp() override
    {
        PasswordFixture::SetUp();
        ASSERT_TRUE(OwnerPassword::choose(QStringLiteral("dueño"), true));
    }
    // A record through the screen: Nuevo, the three boxes, Aceptar, then Timer1.
    void addThroughScreen(PassTree& tree, const QString& site, const QString& user, const QString& password)
    {
        tree.Image3_Click();
        FormNewlink* form = tree.newlinkForm();
        ASSERT_NE(form, nullptr);
        form->Text1()->setText(site);
        form->Text2()->setText(user);
        form->Text3()->setText(password);
        form->CMDacept_Click();
        EXPECT_TRUE(tree.Timer1()->isActive());
        tree.Timer1_Timer();
        EXPECT_FALSE(tree.Timer1()->isActive());
    }
};

TEST_F(PassTreeTest, RecordsSurviveACloseAndAnEditMovesToTheEnd)
{
    test::MessageRecorder messages;
    {
        auto tree = std::make_unique<PassTree>();
        EXPECT_EQ(tree->windowTitle(), QStringLiteral("Vormak 1.20 (Administrador de contraseñas)"));
        addThroughScreen(*tree, "uno", "ana", "p1");
        addThroughScreen(*tree, "dos", "bea", "p2");
        addThroughScreen(*tree, "tres", "eva", "p3");
        // A ";" in a field: the line splits in four and nothing is added.
        addThroughScreen(*tree, "cua;tro", "x", "y");
        EXPECT_EQ(records(tree->nodes()), QStringList({ "uno|ana|p1", "dos|bea|p2", "tres|eva|p3" }));
        // The tree shows sites with the user and the mask beneath, never a password.
        QTreeWidget* view = tree->PswAddTree();
        ASSERT_EQ(view->topLevelItemCount(), 3);
        EXPECT_EQ(view->topLevelItem(1)->text(0), "dos");
        EXPECT_EQ(view->topLevelItem(1)->child(0)->text(0), "bea");
        EXPECT_EQ(view->topLevelItem(1)->child(1)->text(0), "******");
        tree->close();
    }
    auto tree = std::make_unique<PassTree>();
    EXPECT_EQ(records(tree->nodes()), QStringList({ "uno|ana|p1", "dos|bea|p2", "tres|eva|p3" }));

    // Edit with the password child of "uno" selected: the lock, then the form filled.
    tree->SelectIndex(3);
    answerLock(QStringLiteral("dueño"));
    tree->Image1_Click();
    EXPECT_EQ(PV().PendingLink, "1");
    FormNewlink* form = tree->newlinkForm();
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(form->isModal());
    EXPECT_EQ(form->Text1()->text(), "uno");
    EXPECT_EQ(form->Text3()->text(), "p1");
    EXPECT_FALSE(form->CMDacept()->isHidden());
    EXPECT_TRUE(form->Command1()->isHidden());
    // Accepted unchanged, the record still moves to the end.
    form->CMDacept_Click();
    EXPECT_EQ(PV().PendingLink, "uno;ana;p1");
    tree->Timer1_Timer();
    EXPECT_EQ(records(tree->nodes()), QStringList({ "dos|bea|p2", "tres|eva|p3", "uno|ana|p1" }));

    // A view changes nothing and leaves PendingLink empty.
    tree->SelectIndex(4);
    answerLock(QStringLiteral("dueño"));
    tree->Image5_Click();
    form = tree->newlinkForm();
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->Text1()->text(), "tres");
    EXPECT_TRUE(form->CMDacept()->isHidden());
    EXPECT_FALSE(form->Command1()->isHidden());
    form->Text1()->setText("cambiado");
    form->Command1_Click();
    QApplication::processEvents();
    EXPECT_EQ(PV().PendingLink, "");
    EXPECT_FALSE(tree->Timer1()->isActive());

    // A wrong password keeps the lock open; a cancel then does nothing.
    answerLock(QStringLiteral("DUEÑO"));
    QTimer::singleShot(10, [] {
        auto* lock = qobject_cast<FrmPass*>(QApplication::activeModalWidget());
        ASSERT_NE(lock, nullptr);
        lock->CMDcancel_Click();
    });
    tree->Image1_Click();
    EXPECT_EQ(messages.texts, QStringList({ "¡Contraseña incorrecta!" }));
    EXPECT_EQ(records(tree->nodes()), QStringList({ "dos|bea|p2", "tres|eva|p3", "uno|ana|p1" }));

    // Delete asks nothing.
    tree->SelectIndex(5);
    tree->Image2_Click();
    EXPECT_EQ(records(tree->nodes()), QStringList({ "dos|bea|p2", "uno|ana|p1" }));
    tree->close();
    auto reopened = std::make_unique<PassTree>();
    EXPECT_EQ(records(reopened->nodes()), QStringList({ "dos|bea|p2", "uno|ana|p1" }));
}

TEST_F(PassTreeTest, StalePendingLinkAfterADeleteAndEmptyTree)
{
    test::MessageRecorder messages;
    auto tree = std::make_unique<PassTree>();
    // On an empty tree the prompt comes first, then nothing; delete does nothing.
    answerLock(QStringLiteral("dueño"));
    tree->Image1_Click();
    EXPECT_EQ(tree->newlinkForm(), nullptr);
    tree->Image2_Click();
    EXPECT_EQ(tree->nodes().Count(), 0);

    addThroughScreen(*tree, "a", "1", "x");
    addThroughScreen(*tree, "b", "2", "y");
    addThroughScreen(*tree, "c", "3", "z");
    // Edit "b" (index 4), then delete "a" while the form is open.
    tree->SelectIndex(4);
    answerLock(QStringLiteral("dueño"));
    tree->Image1_Click();
    EXPECT_EQ(PV().PendingLink, "4");
    FormNewlink* form = tree->newlinkForm();
    ASSERT_NE(form, nullptr);
    tree->SelectIndex(1);
    tree->Image2_Click();
    EXPECT_EQ(records(tree->nodes()), QStringList({ "b|2|y", "c|3|z" }));
    // The accept removes whatever stands at index 4 now: record "c".
    form->Text1()->setText("b2");
    form->CMDacept_Click();
    tree->Timer1_Timer();
    EXPECT_EQ(records(tree->nodes()), QStringList({ "b|2|y", "b2|2|y" }));
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(PassTreeTest, CopiedPasswordLeavesTheClipboard)
{
    test::MessageRecorder messages;
    auto tree = std::make_unique<PassTree>();
    addThroughScreen(*tree, "a", "1", "clave-a");
    tree->SelectIndex(2);
    answerLock(QStringLiteral("dueño"));
    tree->Image4_Click();
    QClipboard* clipboard = QGuiApplication::clipboard();
    EXPECT_EQ(clipboard->text(), "clave-a");
    EXPECT_TRUE(tree->TimerClip()->isActive());
    EXPECT_EQ(tree->TimerClip()->interval(), 30000);
    emit tree->TimerClip()->timeout({});
    EXPECT_EQ(clipboard->text(), QString());
    // What the user copied since is left alone.
    answerLock(QStringLiteral("dueño"));
    tree->Image4_Click();
    clipboard->setText("otra cosa");
    emit tree->TimerClip()->timeout({});
    EXPECT_EQ(clipboard->text(), "otra cosa");
    // Closing the window clears a copy still on the clipboard.
    answerLock(QStringLiteral("dueño"));
    tree->Image4_Click();
    tree->close();
    EXPECT_EQ(clipboard->text(), QString());
    // A cancelled lock copies nothing.
    auto again = std::make_unique<PassTree>();
    answerLock(std::nullopt);
    again->Image4_Click();
    EXPECT_EQ(clipboard->text(), QString());
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(PassTreeTest, LockWrongRightAndFirstChoice)
{
    test::MessageRecorder messages;
    {
        FrmPass lock;
        EXPECT_FALSE(lock.choosing());
        EXPECT_FALSE(G().PasswordOk);
        EXPECT_EQ(lock.Text1()->echoMode(), QLineEdit::Password);
        EXPECT_TRUE(lock.Check1()->isChecked());
        lock.Check1()->click();
        EXPECT_EQ(lock.Text1()->echoMode(), QLineEdit::Normal);
        lock.Check1()->click();
        EXPECT_EQ(lock.Text1()->echoMode(), QLineEdit::Password);
        lock.show();
        // No count of tries: wrong three times, the form stays with the text.
        for (int i = 0; i < 3; ++i) {
            lock.Text1()->setText("dueno");
            QTest::keyClick(lock.Text1(), Qt::Key_Return);
            EXPECT_TRUE(lock.isVisible());
            EXPECT_EQ(lock.Text1()->text(), "dueno");
        }
        EXPECT_EQ(messages.texts.size(), 3);
        EXPECT_FALSE(G().PasswordOk);
        // Enter on the right text unlocks.
        lock.Text1()->setText("dueño");
        QTest::keyClick(lock.Text1(), Qt::Key_Return);
        EXPECT_FALSE(lock.isVisible());
        EXPECT_TRUE(G().PasswordOk);
    }
    // Each showing starts locked again.
    {
        FrmPass lock;
        EXPECT_FALSE(G().PasswordOk);
    }
    // First use on a device without a verifier: choose and confirm.
    messages.texts.clear();
    S().OwnerPassCheck.clear();
    G().PassPhrase.clear();
    ASSERT_TRUE(StoreSettingInFile("OwnerPassCheck"));
    FrmPass first;
    ASSERT_TRUE(first.choosing());
    EXPECT_FALSE(first.Text2()->isHidden());
    first.show();
    first.CMDacept_Click();
    first.Text1()->setText("nueva");
    first.Text2()->setText("nuevo");
    first.CMDacept_Click();
    EXPECT_EQ(
        messages.texts, QStringList({ "¡La contraseña no puede quedar vacía!", "¡Las contraseñas no coinciden!" }));
    EXPECT_TRUE(first.isVisible());
    first.Text2()->setText("nueva");
    QTest::keyClick(first.Text2(), Qt::Key_Return);
    EXPECT_TRUE(G().PasswordOk);
    EXPECT_EQ(G().PassPhrase, "nueva");
    // The choice is in the file: a new run checks against it.
    G().PassPhrase.clear();
    S() = SettingsValues {};
    ReadSettings();
    EXPECT_FALSE(OwnerPassword::check("dueño"));
    EXPECT_TRUE(OwnerPassword::check("nueva"));
}

// Pictures of the screens for a look by eye: set VMK_SHOTS to a folder.
TEST_F(PassTreeTest, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    test::MessageRecorder messages;
    auto tree = std::make_unique<PassTree>();
    addThroughScreen(*tree, "Correo personal", "ana.garcia@example.org", "x1");
    addThroughScreen(*tree, "Banco en línea", "4471-0092", "x2");
    addThroughScreen(*tree, "Foro de la escuela", "anag", "x3");
    tree->PswAddTree()->expandAll();
    tree->SelectIndex(5);
    tree->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(tree.get()));
    tree->grab().save(dir + "/passwords-PassTree.png");
    FrmPass lock;
    lock.Text1()->setText("secreto");
    lock.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&lock));
    lock.grab().save(dir + "/passwords-FrmPass.png");
    tree->close();
}
