#include "components/cipher/BlockCipher.h"
#include "components/cipher/GcmCipher.h"
#include "components/cipher/PassPhraseKey.h"

#include <gtest/gtest.h>

using namespace vmk::cipher;

namespace
{
QByteArray hex(const char* h)
{
    return QByteArray::fromHex(h);
}
} // namespace

// FIPS-197 appendix C.3 and the Twofish authors' 256-bit ECB known answers.
TEST(CipherPrimitives, BlockCiphersMatchPublishedVectors)
{
    auto aes = BlockCipher::encryptBlock(CipherAlgorithm::Aes256,
        hex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"),
        hex("00112233445566778899aabbccddeeff"));
    ASSERT_TRUE(aes);
    EXPECT_EQ(aes->toHex(), "8ea2b7ca516745bfeafc49904b496089");
    auto aesBack = BlockCipher::decryptBlock(
        CipherAlgorithm::Aes256, hex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f"), *aes);
    EXPECT_EQ(aesBack->toHex(), "00112233445566778899aabbccddeeff");

    auto tf0 = BlockCipher::encryptBlock(CipherAlgorithm::Twofish256, QByteArray(32, '\0'), QByteArray(16, '\0'));
    ASSERT_TRUE(tf0);
    EXPECT_EQ(tf0->toHex().toUpper(), "57FF739D4DC92C1BD7FC01700CC8216F");
    auto tf1 = BlockCipher::encryptBlock(CipherAlgorithm::Twofish256,
        hex("0123456789ABCDEFFEDCBA987654321000112233445566778899AABBCCDDEEFF"), QByteArray(16, '\0'));
    ASSERT_TRUE(tf1);
    EXPECT_EQ(tf1->toHex().toUpper(), "37527BE0052334B89F0CFCCAE87CFA20");
    // Step 49 of the authors' chained 256-bit table (ecb_ival).
    auto tf49 = BlockCipher::encryptBlock(CipherAlgorithm::Twofish256,
        hex("248A7F3528B168ACFDD1386E3F51E30C2E2158BC3E5FC714C1EEECA0EA696D48"),
        hex("431058F4DBC7F734DA4F02F04CC4F459"));
    ASSERT_TRUE(tf49);
    EXPECT_EQ(tf49->toHex().toUpper(), "37FE26FF1CF66175F5DDF4C33B97A205");

    EXPECT_FALSE(BlockCipher::encryptBlock(CipherAlgorithm::Aes256, QByteArray(16, '\0'), QByteArray(16, '\0')))
        << "a 128-bit key is not a 256-bit cipher's key";
}

// Test case 14 (AES-256) of McGrew and Viega's GCM paper and a NIST CAVP GCMVS vector with
// associated data; both directions, and the tag rejects a changed byte anywhere.
TEST(CipherPrimitives, GcmMatchesPublishedVectorsAndRejectsChanges)
{
    struct Vector {
        const char *key, *iv, *aad, *pt, *ct, *tag;
    };
    const Vector vectors[] = {
        { "0000000000000000000000000000000000000000000000000000000000000000", "000000000000000000000000", "",
            "00000000000000000000000000000000", "cea7403d4d606b6e074ec5d3baf39d18",
            "d0d1c8a799996bf0265b98b5d48ab919" },
        { "83688deb4af8007f9b713b47cfa6c73e35ea7a3aa4ecdb414dded03bf7a0fd3a", "0b459724904e010a46901cf3",
            "794a14ccd178c8ebfd1379dc704c5e208f9d8424", "33d893a2114ce06fc15d55e454cf90c3",
            "cc66bee423e3fcd4c0865715e9586696", "0fb291bd3dba94a1dfd8b286cfb97ac5" },
    };
    for (const Vector& v : vectors) {
        GcmCipher gcm(CipherAlgorithm::Aes256);
        const QByteArray key = hex(v.key), iv = hex(v.iv), aad = hex(v.aad);
        ASSERT_TRUE(gcm.setKey(key.constData(), key.size()));
        QByteArray data = hex(v.pt);
        QByteArray tag(16, '\0');
        ASSERT_TRUE(
            gcm.encrypt(iv.constData(), iv.size(), aad.constData(), aad.size(), data.data(), data.size(), tag.data()));
        EXPECT_EQ(data.toHex(), QByteArray(v.ct));
        EXPECT_EQ(tag.toHex(), QByteArray(v.tag));

        QByteArray back = data;
        ASSERT_TRUE(gcm.decrypt(
            iv.constData(), iv.size(), aad.constData(), aad.size(), back.data(), back.size(), tag.constData()));
        EXPECT_EQ(back.toHex(), QByteArray(v.pt));

        QByteArray flipped = data;
        flipped[3] = static_cast<char>(flipped[3] ^ 0x10);
        EXPECT_FALSE(gcm.decrypt(
            iv.constData(), iv.size(), aad.constData(), aad.size(), flipped.data(), flipped.size(), tag.constData()));
        QByteArray otherAad = aad + "x";
        back = data;
        EXPECT_FALSE(gcm.decrypt(iv.constData(), iv.size(), otherAad.constData(), otherAad.size(), back.data(),
            back.size(), tag.constData()));
    }

    // Twofish in the same mode: a round trip, and a different key fails the tag.
    GcmCipher tf(CipherAlgorithm::Twofish256), other(CipherAlgorithm::Twofish256);
    const QByteArray k1(32, 'a'), k2(32, 'b'), iv(12, 'n');
    ASSERT_TRUE(tf.setKey(k1.constData(), k1.size()));
    ASSERT_TRUE(other.setKey(k2.constData(), k2.size()));
    QByteArray msg("Two-Fish in counter mode with a Galois tag"), tag(16, '\0');
    const QByteArray clear = msg;
    ASSERT_TRUE(tf.encrypt(iv.constData(), iv.size(), nullptr, 0, msg.data(), msg.size(), tag.data()));
    EXPECT_NE(msg, clear);
    QByteArray copy = msg;
    EXPECT_FALSE(other.decrypt(iv.constData(), iv.size(), nullptr, 0, copy.data(), copy.size(), tag.constData()));
    ASSERT_TRUE(tf.decrypt(iv.constData(), iv.size(), nullptr, 0, msg.data(), msg.size(), tag.constData()));
    EXPECT_EQ(msg, clear);
}

// RFC 9106 section 5.3: Argon2id with secret and associated data.
TEST(CipherPrimitives, Argon2idMatchesRfc9106AndTheCacheDerivesOnce)
{
    auto tag = PassPhraseKey::argon2id(QByteArray(32, '\x01'), QByteArray(16, '\x02'), KdfParams { 3, 32, 4 }, 32,
        QByteArray(8, '\x03'), QByteArray(12, '\x04'));
    ASSERT_TRUE(tag);
    EXPECT_EQ(tag->toHex(), "0d640df58d78766c08c037a34a8b53c9d01ef0452d75b65eb52520e96b01e659");

    EXPECT_FALSE(PassPhraseKey::argon2id("p", QByteArray(16, 's'), KdfParams { 3, 4u << 21, 1 }, 32))
        << "a cost beyond what a reader accepts is refused";

    PassPhraseKey::clearCache();
    const KdfParams light { 1, 64, 1 };
    const int before = PassPhraseKey::derivationCount();
    auto a = PassPhraseKey::derive("secret", QByteArray(16, 's'), light);
    auto b = PassPhraseKey::derive("secret", QByteArray(16, 's'), light);
    auto c = PassPhraseKey::derive("secret", QByteArray(16, 't'), light);
    auto d = PassPhraseKey::derive("Secret", QByteArray(16, 's'), light);
    ASSERT_TRUE(a && b && c && d);
    EXPECT_EQ(*a, *b);
    EXPECT_NE(*a, *c);
    EXPECT_NE(*a, *d);
    EXPECT_EQ(PassPhraseKey::derivationCount() - before, 3) << "the repeated derivation must come from the cache";
    EXPECT_EQ(*PassPhraseKey::argon2id("secret", QByteArray(16, 's'), light, 32), *a);
}
