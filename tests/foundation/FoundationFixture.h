#pragma once

#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "platform/DriveMap.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// A temporary folder mounted as the device E:, with the program folder at its root
// and the system folder in C: under it.
class FoundationFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_root = QDir(m_dir.path()).canonicalPath() + "/device";
        QDir().mkpath(m_root);
        QDir().mkpath(QDir(m_dir.path()).canonicalPath() + "/system");
        vmk::DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', m_root } }, u'E');
        vmk::G() = vmk::Globals {};
        vmk::G().ProgramFolder = QStringLiteral("E:\\");
        vmk::G().ProgramDrive = QStringLiteral("E:");
        vmk::G().SystemFolder = vmk::DriveMap::instance().toLogical(QDir(m_dir.path()).canonicalPath() + "/system");
        vmk::S() = vmk::SettingsValues {};
    }
    void TearDown() override
    {
        vmk::DriveMap::instance().resetToHost();
        vmk::G() = vmk::Globals {};
        vmk::S() = vmk::SettingsValues {};
    }
    QString systemNative() const { return QDir(m_dir.path()).canonicalPath() + "/system"; }

    QTemporaryDir m_dir;
    QString m_root;
};
