#include "components/cipher/ValueSeal.h"

#include <gtest/gtest.h>

using vmk::cipher::ValueSeal;

TEST(ValueSeal, RoundTripIsDeterministicAndDetectsDamage)
{
    for (const QByteArray& clear : { QByteArray(), QByteArray("a"), QByteArray("\\Mis Documentos\\Cuarentena\\"),
             QByteArray("\xc3\xb1"
                        "and\xc3\xba=\xc3\xa1"),
             QByteArray(300, 'x') }) {
        auto sealed = ValueSeal::seal(clear);
        ASSERT_TRUE(sealed);
        EXPECT_EQ(sealed->size(), clear.size() + 16);
        EXPECT_EQ(*ValueSeal::seal(clear), *sealed) << "the same text must always seal alike";
        auto back = ValueSeal::unseal(*sealed);
        ASSERT_TRUE(back);
        EXPECT_EQ(*back, clear);

        QByteArray flipped = *sealed;
        flipped[0] = static_cast<char>(flipped[0] ^ 1);
        EXPECT_FALSE(ValueSeal::unseal(flipped));
        EXPECT_FALSE(ValueSeal::unseal(sealed->left(sealed->size() - 1)));
    }
    EXPECT_NE(*ValueSeal::seal("a"), *ValueSeal::seal("b"));
}
