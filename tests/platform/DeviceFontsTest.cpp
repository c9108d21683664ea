#include "platform/DeviceFonts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using vmk::DeviceFonts;

TEST(DeviceFonts, TheDevicesFontsStandInOnlyOnAHostWithoutAny)
{
    const QByteArray oldFile = qgetenv("FONTCONFIG_FILE");
    const QByteArray oldPath = qgetenv("FONTCONFIG_PATH");
    qunsetenv("FONTCONFIG_FILE");
    qunsetenv("FONTCONFIG_PATH");
    QTemporaryDir tmp;
    ASSERT_TRUE(tmp.isValid());
    const QString program = tmp.filePath(QStringLiteral("device"));
    const QString hostConfig = tmp.filePath(QStringLiteral("etc/fonts/fonts.conf"));
    ASSERT_TRUE(QDir().mkpath(program + QStringLiteral("/fonts")));

    // A device without fonts: nothing to offer.
    EXPECT_EQ(DeviceFonts::configToUse(program, hostConfig), QString());
    QFile own(program + QStringLiteral("/fonts/fonts.conf"));
    ASSERT_TRUE(own.open(QIODevice::WriteOnly));
    own.close();
    // A host without a configuration takes the device's.
    EXPECT_EQ(DeviceFonts::configToUse(program, hostConfig), QFileInfo(own).absoluteFilePath());
    // The user's own choice wins, as does the host's configuration.
    qputenv("FONTCONFIG_FILE", "/somewhere/fonts.conf");
    EXPECT_EQ(DeviceFonts::configToUse(program, hostConfig), QString());
    qunsetenv("FONTCONFIG_FILE");
    qputenv("FONTCONFIG_PATH", "/somewhere");
    EXPECT_EQ(DeviceFonts::configToUse(program, hostConfig), QString());
    qunsetenv("FONTCONFIG_PATH");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(hostConfig).absolutePath()));
    QFile host(hostConfig);
    ASSERT_TRUE(host.open(QIODevice::WriteOnly));
    host.close();
    EXPECT_EQ(DeviceFonts::configToUse(program, hostConfig), QString());

    if (!oldFile.isNull())
        qputenv("FONTCONFIG_FILE", oldFile);
    if (!oldPath.isNull())
        qputenv("FONTCONFIG_PATH", oldPath);
}
