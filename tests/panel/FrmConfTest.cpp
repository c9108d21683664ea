#include "DeviceFixture.h"

#include "filemanager/ui/SmartTree.h"
#include "foundation/Globals.h"
#include "foundation/SettingKey.h"
#include "foundation/Settings.h"
#include "panel/ControlPanel.h"
#include "panel/ui/Form1.h"
#include "panel/ui/Form6.h"
#include "panel/ui/FrmConf.h"
#include "passwords/OwnerPassword.h"
#include "passwords/ui/FrmPass.h"
#include "passwords/ui/PassTree.h"

#include "TestSupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using namespace vmk;
using namespace vmk::panel;

namespace
{
// Acts on the first modal form of type T once it is shown; the flag tells when it did.
template<typename T> std::shared_ptr<bool> whenModal(std::function<void(T*)> act)
{
    auto done = std::make_shared<bool>(false);
    auto* poll = new QTimer;
    poll->setInterval(0);
    QObject::connect(poll, &QTimer::timeout, [poll, act, done] {
        if (auto* form = qobject_cast<T*>(QApplication::activeModalWidget())) {
            poll->stop();
            poll->deleteLater();
            *done = true;
            act(form);
        }
    });
    poll->start();
    return done;
}

std::shared_ptr<bool> answerLock(const QString& password)
{
    return whenModal<passwords::FrmPass>([password](passwords::FrmPass* lock) {
        lock->Text1()->setText(password);
        lock->CMDacept_Click();
    });
}

void click(QWidget* w)
{
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), w->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
        Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(2, 2), w->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(w, &press);
    QApplication::sendEvent(w, &release);
}

// A tool button of the panel: the mouse over its picture lights it, then a click.
void clickTool(Form1& form1, const char* zone, const char* lit)
{
    QLabel* z = form1.label(zone);
    QMouseEvent move(QEvent::MouseMove, QPointF(10, 10), z->mapToGlobal(QPointF(10, 10)), Qt::NoButton, Qt::NoButton,
        Qt::NoModifier);
    QApplication::sendEvent(z, &move);
    ASSERT_TRUE(form1.label(lit)->isVisible());
    click(form1.label(lit));
}

template<typename T> T* topLevel()
{
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (auto* t = qobject_cast<T*>(w); t && t->isVisible())
            return t;
    }
    return nullptr;
}
} // namespace

class FrmConfTest : public test::DeviceFixture
{
protected:
    void SetUp() override
    {
        DeviceFixture::SetUp();
        // The defaults' file, then the folders of this device and some values of our own.
        ASSERT_TRUE(WriteDefaultSettings());
        ReadSettings();
        S().CompFileFolder = QStringLiteral("\\Mis Documentos\\Comprimidos\\");
        S().EncriptFileFolder = QStringLiteral("\\Mis Documentos\\Encriptados\\");
        S().ScanTimeout = QStringLiteral("120");
        S().DeleteFilesMode = QStringLiteral("2");
        S().CompAlgorithm = 1;
        S().DeleteFilesAfter = 30;
        S().FtpPassword = QStringLiteral("ftp-viejo");
        G().PassPhrase = QStringLiteral("dueño");
    }
    QString file() const { return QString::fromUtf8(test::readFile(native(m_programFolder + "\\VMK.cnf"))); }
};

TEST_F(FrmConfTest, PagesBindingsAndCancel)
{
    test::MessageRecorder messages;
    auto form = std::make_unique<FrmConf>();
    form->show();
    // Filled from the variables; #DeleteFilesMode by comparison; the masks on.
    EXPECT_EQ(form->control<QComboBox>("Combo5")->currentText(), "Unlimited");
    EXPECT_EQ(form->control<QComboBox>("Combo1")->currentText(), "120");
    EXPECT_TRUE(form->control<QRadioButton>("Option8")->isChecked());
    EXPECT_FALSE(form->control<QRadioButton>("Option7")->isChecked());
    EXPECT_EQ(form->control<QComboBox>("Combo2")->currentIndex(), 1);
    EXPECT_EQ(form->control<QComboBox>("Combo4")->currentText(), "30");
    EXPECT_TRUE(form->control<QCheckBox>("Check15")->isChecked());
    EXPECT_EQ(form->control<QLineEdit>("Text6")->text(), "\\Mis Documentos\\Comprimidos\\");
    EXPECT_EQ(form->control<QLineEdit>("Text8")->text(), "dueño");
    for (const char* masked : { "Text8", "Text12", "Text5" })
        EXPECT_EQ(form->control<QLineEdit>(masked)->echoMode(), QLineEdit::Password) << masked;
    form->control<QCheckBox>("Check19")->click();
    EXPECT_EQ(form->control<QLineEdit>("Text12")->echoMode(), QLineEdit::Normal);
    form->control<QCheckBox>("Check16")->click();
    EXPECT_EQ(form->control<QLineEdit>("Text8")->echoMode(), QLineEdit::Normal);
    // Every bound control of the table is on the page the table names.
    for (const SettingKey* k : SettingKeysBy(&SettingKey::DialogOrder)) {
        for (const char* c : k->DialogControls) {
            if (!c)
                continue;
            QWidget* w = form->control<QWidget>(c);
            ASSERT_NE(w, nullptr) << c;
            EXPECT_TRUE(form->control<QFrame>(k->DialogFrame)->isAncestorOf(w)) << c;
        }
    }

    // The five labels: four pages, and Extras shows none.
    EXPECT_EQ(form->visibleFrame()->objectName(), "Frame1");
    const std::pair<const char*, const char*> pages[4]
        = { { "Label7", "Frame3" }, { "Label8", "Frame5" }, { "Label9", "Frame4" }, { "Label6", "Frame1" } };
    for (const auto& [label, frame] : pages) {
        click(form->control<QLabel>(label));
        EXPECT_EQ(form->visibleFrame()->objectName(), frame) << label;
    }
    click(form->control<QLabel>("Label11"));
    EXPECT_EQ(form->visibleFrame()->objectName(), "Frame1");
    EXPECT_TRUE(form->control<QFrame>("Frame2")->isHidden());

    // Write-through at each change.
    form->control<QCheckBox>("Check1")->click();
    EXPECT_EQ(S().ArchiveScan, "1");
    QComboBox* combo5 = form->control<QComboBox>("Combo5");
    combo5->setCurrentIndex(3);
    emit combo5->activated(3);
    EXPECT_EQ(S().ArchiveMaxSize, "250M");
    combo5->setCurrentIndex(0);
    emit combo5->activated(0);
    EXPECT_EQ(S().ArchiveMaxSize, "0");
    form->control<QRadioButton>("Option6")->click();
    EXPECT_EQ(S().DeleteFilesMode, "1");
    form->control<QComboBox>("Combo3")->setCurrentIndex(1);
    EXPECT_EQ(S().EncripAlgorithm, 1);
    form->control<QComboBox>("Combo4")->setEditText("45");
    EXPECT_EQ(S().DeleteFilesAfter, 45);
    form->control<QCheckBox>("Check15")->click();
    EXPECT_EQ(S().DeleteFilesOpt, 0);
    form->control<QLineEdit>("Text13")->setText("ftp.example.org");
    form->control<QLineEdit>("Text12")->setText("ftp-nuevo");
    EXPECT_EQ(S().FtpServer, "ftp.example.org");
    form->control<QLineEdit>("Text8")->setText("tecleada");
    EXPECT_EQ(G().PassPhrase, "tecleada");

    // Cancelar: back to the file, but for the five keys that survive and PassPhrase.
    bool unloaded = false;
    QObject::connect(form.get(), &FrmConf::unloaded, [&unloaded] { unloaded = true; });
    click(form->control<QLabel>("Label33"));
    EXPECT_TRUE(unloaded);
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(S().ArchiveScan, "0");
    EXPECT_EQ(S().ArchiveMaxSize, "0");
    EXPECT_EQ(S().DeleteFilesMode, "0");
    EXPECT_EQ(S().DeleteFilesAfter, 60);
    EXPECT_EQ(S().EncripAlgorithm, 0);
    EXPECT_EQ(S().FtpServer, "ftp.example.org");
    EXPECT_EQ(S().FtpPassword, "ftp-nuevo");
    EXPECT_EQ(S().DeleteFilesOpt, 0);
    EXPECT_EQ(G().PassPhrase, "tecleada");
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('|').toStdString();
}

TEST_F(FrmConfTest, AcceptChecksFoldersDaysAndSaves)
{
    test::MessageRecorder messages;
    ASSERT_TRUE(passwords::OwnerPassword::choose(QStringLiteral("dueño"), true));
    EXPECT_TRUE(file().contains("UpdateProxy="));
    auto form = std::make_unique<FrmConf>();
    form->show();
    // The two stage folders must be folders strictly below the device root.
    QLineEdit* text6 = form->control<QLineEdit>("Text6");
    QLineEdit* text7 = form->control<QLineEdit>("Text7");
    for (const QString& bad : { QString(), QStringLiteral("\\"), QStringLiteral("\\no existe\\"),
             QStringLiteral("\\Mis Documentos\\..\\"), QStringLiteral("\\VMK\\") }) {
        messages.texts.clear();
        text6->setText(bad);
        form->Label32_Click();
        ASSERT_EQ(messages.texts.size(), 1) << bad.toStdString();
        EXPECT_TRUE(messages.texts[0].startsWith("Carpeta Comprimida inválida")) << messages.texts[0].toStdString();
        EXPECT_TRUE(form->isVisible());
    }
    text6->setText("\\Mis Documentos\\Comprimidos\\");
    text7->setText("\\");
    messages.texts.clear();
    form->Label32_Click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].startsWith("Carpeta Encriptada inválida"));
    text7->setText("\\Mis Documentos\\Encriptados\\");
    // A number of days that is no number: a message naming the setting, no crash.
    form->control<QComboBox>("Combo4")->setEditText("sesenta");
    EXPECT_EQ(S().DeleteFilesAfter, 30);
    messages.texts.clear();
    form->Label32_Click();
    ASSERT_EQ(messages.texts.size(), 1);
    EXPECT_TRUE(messages.texts[0].contains("#DeleteFilesAfter: sesenta")) << messages.texts[0].toStdString();
    EXPECT_TRUE(form->isVisible());
    form->control<QComboBox>("Combo4")->setEditText("90");
    form->control<QLineEdit>("Text13")->setText("ftp.example.org");
    form->control<QLineEdit>("Text8")->setText("nueva clave");
    messages.texts.clear();
    click(form->control<QLabel>("Label32"));
    EXPECT_FALSE(form->isVisible());
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('|').toStdString();
    // Saved in the dialog's order: the proxy keys gone, the new values and verifier in.
    const QString saved = file();
    EXPECT_FALSE(saved.contains("UpdateProxy"));
    EXPECT_FALSE(saved.contains("nueva"));
    EXPECT_TRUE(saved.contains("#FtpServer=" + SealValue("ftp.example.org")));
    S() = SettingsValues {};
    ReadSettings();
    EXPECT_EQ(S().DeleteFilesAfter, 90);
    EXPECT_EQ(S().FtpServer, "ftp.example.org");
    EXPECT_EQ(S().FtpPassword, "ftp-viejo");
    EXPECT_EQ(S().CompFileFolder, "\\Mis Documentos\\Comprimidos\\");
    // The owner's password is now the new one.
    G().PassPhrase.clear();
    EXPECT_FALSE(passwords::OwnerPassword::check("dueño"));
    EXPECT_TRUE(passwords::OwnerPassword::check("nueva clave"));
}

TEST_F(FrmConfTest, DotsButtonsPickThroughForm6)
{
    test::MessageRecorder messages;
    auto form = std::make_unique<FrmConf>();
    form->show();
    whenModal<Form6>([](Form6* picker) {
        picker->tree()->Expand("E:\\Mis Documentos\\");
        ASSERT_TRUE(picker->tree()->SelectKey("E:\\Mis Documentos\\Respaldos\\"));
        picker->Command1_Click();
    });
    form->control<QPushButton>("Command2")->click();
    EXPECT_EQ(form->control<QLineEdit>("Text6")->text(), "\\Mis Documentos\\Respaldos\\");
    EXPECT_EQ(S().CompFileFolder, "\\Mis Documentos\\Respaldos\\");
    // The picker's result is #OtherLocation too.
    EXPECT_EQ(S().OtherLocation, "\\Mis Documentos\\Respaldos\\");
    // A cancelled picker leaves the box as it was.
    whenModal<Form6>([](Form6* picker) { picker->Command2_Click(); });
    form->control<QPushButton>("Command7")->click();
    EXPECT_EQ(form->control<QLineEdit>("Text11")->text(), "\\Mis Documentos\\Cuarentena\\");
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(FrmConfTest, PanelButtonsOpenTheLockThenTheirScreens)
{
    test::MessageRecorder messages;
    ASSERT_TRUE(passwords::OwnerPassword::choose(QStringLiteral("dueño"), true));
    G().PassPhrase.clear(); // a new run: the verifier alone knows it
    ControlPanel panel;
    Form1 form1(panel, Form1::Hooks {});
    form1.show();
    // A cancelled lock opens nothing.
    auto answered = whenModal<passwords::FrmPass>([](passwords::FrmPass* lock) { lock->CMDcancel_Click(); });
    clickTool(form1, "Image8", "Image16");
    // The click runs once its event is done, and the lock is modal.
    ASSERT_TRUE(QTest::qWaitFor([&answered] { return *answered; }));
    EXPECT_TRUE(form1.isVisible());
    EXPECT_EQ(topLevel<passwords::PassTree>(), nullptr);

    answered = answerLock("dueño");
    clickTool(form1, "Image8", "Image16");
    ASSERT_TRUE(QTest::qWaitFor([&answered] { return *answered; }));
    passwords::PassTree* tree = topLevel<passwords::PassTree>();
    ASSERT_NE(tree, nullptr);
    EXPECT_FALSE(form1.isVisible());
    tree->close();
    EXPECT_TRUE(form1.isVisible());

    answered = answerLock("dueño");
    clickTool(form1, "Image10", "Image18");
    ASSERT_TRUE(QTest::qWaitFor([&answered] { return *answered; }));
    FrmConf* conf = topLevel<FrmConf>();
    ASSERT_NE(conf, nullptr);
    EXPECT_FALSE(form1.isVisible());
    conf->Label33_Click();
    EXPECT_TRUE(form1.isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(messages.texts.isEmpty()) << messages.texts.join('|').toStdString();
}

// Pictures of each reachable page for a look by eye: set VMK_SHOTS to a folder.
TEST_F(FrmConfTest, Pictures)
{
    const QString dir = qEnvironmentVariable("VMK_SHOTS");
    if (dir.isEmpty())
        GTEST_SKIP() << "VMK_SHOTS not set";
    S().FtpServer = "ftp.example.org";
    S().FtpUserName = "respaldos";
    S().FtpPassword = "x";
    auto form = std::make_unique<FrmConf>();
    form->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(form.get()));
    const std::pair<void (FrmConf::*)(), const char*> pages[4]
        = { { &FrmConf::Label6_Click, "1-scanner" }, { &FrmConf::Label7_Click, "2-files" },
              { &FrmConf::Label8_Click, "3-backups" }, { &FrmConf::Label9_Click, "4-quarantine" } };
    for (const auto& [show, name] : pages) {
        (form.get()->*show)();
        form->grab().save(dir + "/settings-" + name + ".png");
    }
    form->Label33_Click();
}
