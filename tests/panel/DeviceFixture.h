#pragma once

#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace vmk::test
{

// A device for one test: temporary folders mapped as the host drive C: and
// the device E:, the program folder on the device, the registry stand-in and
// the system folder in the temporary host, and the settings at their defaults
// with the five folders of the panel created.
class DeviceFixture : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    // Native path of a logical one.
    QString native(const QString& logical) const;
    // Writes a file on the device (logical path) and returns its native path.
    QString put(const QString& logical, const QByteArray& bytes);
    // Writes an executable shell script.
    QString putScript(const QString& logical, const QByteArray& body);
    // The master.idx first line for a date.
    static QByteArray indexLine(const QDate& date);

    QTemporaryDir m_host;
    QTemporaryDir m_device;
    QString m_programFolder = QStringLiteral("E:\\VMK");
};

} // namespace vmk::test
