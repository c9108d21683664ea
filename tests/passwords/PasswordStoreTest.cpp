#include "PasswordFixture.h"

#include "components/cipher/PassPhraseVerifier.h"
#include "foundation/Settings.h"
#include "passwords/OwnerPassword.h"
#include "passwords/PasswordStore.h"

#include "TestSupport.h"

#include <QFile>

using namespace vmk;
using namespace vmk::passwords;

namespace
{
QStringList records(const PswNodes& nodes)
{
    QStringList out;
    for (int i = 1; i <= nodes.Count() - 1; i += 3) {
        EXPECT_EQ(nodes.Tag(i), kRecordTag);
        EXPECT_EQ(nodes.Parent(i + 1), i);
        EXPECT_EQ(nodes.Parent(i + 2), i);
        EXPECT_EQ(nodes.Text(i + 2), kPasswordMask);
        out << nodes.Text(i) + '|' + nodes.Text(i + 1) + '|' + nodes.Tag(i + 2);
    }
    return out;
}
} // namespace

using PasswordStoreTest = PasswordFixture;

TEST_F(PasswordStoreTest, RecordsAreThreeNodesAndSurviveASaveInOrder)
{
    test::MessageRecorder messages;
    PswNodes nodes;
    // A missing file: an empty tree, no word; the first save makes an empty file.
    LoadPasswordStore(nodes);
    EXPECT_EQ(nodes.Count(), 0);
    ASSERT_TRUE(SavePasswordStore(nodes));
    EXPECT_EQ(test::readFile(storePath()), QByteArray());
    // Three pieces or nothing.
    agregalink(nodes, "correo;ana;Secreto 1");
    agregalink(nodes, "banco;;una contraseña muy larga con ñ y \"comillas\" \\ *");
    agregalink(nodes, ";;");
    agregalink(nodes, "solo;dos");
    agregalink(nodes, "uno;dos;tres;cuatro");
    agregalink(nodes, "");
    ASSERT_EQ(nodes.Count(), 9);
    EXPECT_EQ(records(nodes),
        QStringList({ "correo|ana|Secreto 1", "banco||una contraseña muy larga con ñ y \"comillas\" \\ *", "||" }));
    ASSERT_TRUE(SavePasswordStore(nodes));
    // Three lines of upper-case hexadecimal, each ended by CR LF; no password in clear.
    const QByteArray file = test::readFile(storePath());
    EXPECT_EQ(file.count("\r\n"), 3);
    for (const QByteArray& line : file.split('\n')) {
        const QByteArray l = line.trimmed();
        EXPECT_TRUE(QByteArray::fromHex(l).toHex().toUpper() == l) << l.constData();
    }
    EXPECT_FALSE(file.contains("Secreto"));
    EXPECT_FALSE(QFile::exists(storePath() + ".new"));
    PswNodes again;
    LoadPasswordStore(again);
    EXPECT_EQ(records(again), records(nodes));
    EXPECT_TRUE(messages.texts.isEmpty());

    // Removing a record node takes its children; the gap closes.
    ASSERT_TRUE(again.Remove(4));
    EXPECT_EQ(again.Count(), 6);
    EXPECT_EQ(records(again), QStringList({ "correo|ana|Secreto 1", "||" }));
    EXPECT_FALSE(again.Remove(7));
    EXPECT_EQ(RecordOf(again, 6), 4);
    EXPECT_EQ(RecordOf(again, 4), 4);
    EXPECT_EQ(RecordOf(again, 0), 0);
}

TEST_F(PasswordStoreTest, ASemicolonFieldIsWrittenThenVanishesAndABadLineIsDropped)
{
    test::MessageRecorder messages;
    // A field that holds ";" (the tree takes any text) is written without complaint...
    PswNodes nodes;
    agregalink(nodes, "primero;u;p");
    const int r = nodes.Add(0, "sitio;con punto y coma");
    nodes.SetTag(r, kRecordTag);
    nodes.Add(r, "usuario");
    nodes.SetTag(nodes.Add(r, kPasswordMask), "clave");
    agregalink(nodes, "último;u;p");
    ASSERT_TRUE(SavePasswordStore(nodes));
    EXPECT_EQ(test::readFile(storePath()).count("\r\n"), 3);
    // ... vanishes at the next load, silently, and is gone from the file at the close after.
    PswNodes second;
    LoadPasswordStore(second);
    EXPECT_EQ(records(second), QStringList({ "primero|u|p", "último|u|p" }));
    EXPECT_TRUE(messages.texts.isEmpty());
    ASSERT_TRUE(SavePasswordStore(second));
    EXPECT_EQ(test::readFile(storePath()).count("\r\n"), 2);

    // A line that does not unseal (damaged, foreign, truncated, non-UTF-8) is
    // dropped with the seal's message; the others load; the next save forgets it.
    QByteArray file = test::readFile(storePath());
    const QByteArray good = file.left(file.indexOf("\r\n"));
    QByteArray damaged = good;
    damaged[4] = damaged[4] == 'A' ? 'B' : 'A';
    file = good + "\r\n" + damaged + "\r\n" + good.left(good.size() / 2) + "\r\nnot hex at all\xff\xfe\r\n"
        + SealValue(QStringLiteral("sólo;dos")).toLatin1() + "\r\n";
    ASSERT_TRUE(test::writeFile(storePath(), file));
    PswNodes third;
    LoadPasswordStore(third);
    EXPECT_EQ(records(third), QStringList({ "primero|u|p" }));
    ASSERT_EQ(messages.texts.size(), 3);
    for (const QString& t : messages.texts)
        EXPECT_TRUE(t.startsWith(QStringLiteral("¡Error de decriptado!"))) << t.toStdString();
    ASSERT_TRUE(SavePasswordStore(third));
    EXPECT_EQ(test::readFile(storePath()), good + "\r\n");
}

TEST_F(PasswordStoreTest, LineReaderAndInterruptedSave)
{
    EXPECT_EQ(PasswordStoreLines(""), QStringList());
    EXPECT_EQ(PasswordStoreLines("\r\n"), QStringList({ "" }));
    EXPECT_EQ(PasswordStoreLines("A\r\nB"), QStringList({ "A", "B" }));
    EXPECT_EQ(PasswordStoreLines("A\nB\rC\r\n\r\n"), QStringList({ "A", "B", "C", "" }));

    test::MessageRecorder messages;
    PswNodes nodes;
    agregalink(nodes, "viejo;u;p");
    ASSERT_TRUE(SavePasswordStore(nodes));
    const QByteArray before = test::readFile(storePath());
    // The drive goes away once the new store is written aside: the old store stays whole.
    agregalink(nodes, "nuevo;u;p");
    QString aside;
    g_afterTemporaryStore = [&aside](const QString& temporary) {
        aside = temporary;
        return false;
    };
    EXPECT_FALSE(SavePasswordStore(nodes));
    EXPECT_EQ(test::readFile(storePath()), before);
    EXPECT_EQ(test::readFile(aside).count("\r\n"), 2); // the whole new store was there
    PswNodes reread;
    LoadPasswordStore(reread);
    EXPECT_EQ(records(reread), QStringList({ "viejo|u|p" }));
    // The next save goes through and replaces the leftover.
    g_afterTemporaryStore = nullptr;
    ASSERT_TRUE(SavePasswordStore(nodes));
    EXPECT_FALSE(QFile::exists(aside));
    reread.Clear();
    LoadPasswordStore(reread);
    EXPECT_EQ(records(reread), QStringList({ "viejo|u|p", "nuevo|u|p" }));
    EXPECT_TRUE(messages.texts.isEmpty());
}

TEST_F(PasswordStoreTest, OwnerPasswordLivesOnlyAsAVerifier)
{
    test::MessageRecorder messages;
    EXPECT_FALSE(OwnerPassword::isChosen());
    ASSERT_TRUE(OwnerPassword::choose(QStringLiteral("Dueño#1"), true));
    const QByteArray file = test::readFile(m_root + "/VMK.cnf");
    EXPECT_TRUE(file.contains("OwnerPassCheck=argon2id$"));
    EXPECT_FALSE(file.contains("Due"));
    EXPECT_FALSE(file.contains(SealValue(QStringLiteral("Dueño#1")).toLatin1()));
    // Another run: only the verifier is known.
    G().PassPhrase.clear();
    S() = SettingsValues {};
    ReadSettings();
    ASSERT_TRUE(OwnerPassword::isChosen());
    EXPECT_FALSE(OwnerPassword::check(QStringLiteral("dueño#1")));
    EXPECT_TRUE(G().PassPhrase.isEmpty());
    EXPECT_TRUE(OwnerPassword::check(QStringLiteral("Dueño#1")));
    EXPECT_EQ(G().PassPhrase, QStringLiteral("Dueño#1"));
    // Once held, the comparison is with PassPhrase itself (a quarantine run may swap it).
    G().PassPhrase = QStringLiteral("otra");
    EXPECT_TRUE(OwnerPassword::check(QStringLiteral("otra")));
    EXPECT_FALSE(OwnerPassword::check(QStringLiteral("Dueño#1")));
    // Two verifiers of one password differ (random salt) and both match; forged ones do not.
    const auto a = cipher::PassPhraseVerifier::make("x");
    const auto b = cipher::PassPhraseVerifier::make("x");
    ASSERT_TRUE(a && b);
    EXPECT_NE(*a, *b);
    EXPECT_TRUE(cipher::PassPhraseVerifier::matches("x", *b));
    for (const QString& forged : { QString(), QStringLiteral("argon2id$3$65536$1$$"),
             QStringLiteral("argon2id$99$99999999$1$") + a->section('$', 4),
             a->section('$', 0, 4) + QStringLiteral("$00"), QStringLiteral("plain") })
        EXPECT_FALSE(cipher::PassPhraseVerifier::matches("x", forged)) << forged.toStdString();
    // A line of VMK.cnf is rewritten alone; the others stay as the file holds them.
    S().FtpServer = QStringLiteral("en memoria");
    ASSERT_TRUE(StoreSettingInFile(QStringLiteral("OwnerPassCheck")));
    EXPECT_FALSE(test::readFile(m_root + "/VMK.cnf").contains(SealValue(QStringLiteral("en memoria")).toLatin1()));
    // Without a file, the whole settings are written.
    ASSERT_TRUE(QFile::remove(m_root + "/VMK.cnf"));
    ASSERT_TRUE(StoreSettingInFile(QStringLiteral("OwnerPassCheck")));
    EXPECT_TRUE(test::readFile(m_root + "/VMK.cnf").contains(SealValue(QStringLiteral("en memoria")).toLatin1()));
    EXPECT_TRUE(test::readFile(m_root + "/VMK.cnf").contains("OwnerPassCheck=argon2id$"));
    EXPECT_TRUE(messages.texts.isEmpty());
}
