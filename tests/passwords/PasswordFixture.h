#pragma once

#include "foundation/Globals.h"
#include "foundation/Settings.h"
#include "passwords/PasswordStore.h"
#include "platform/DriveMap.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// A temporary folder as the device E:, the program folder at its root (so
// PSWADMON.cnf and VMK.cnf lie in it), the settings at their defaults.
class PasswordFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_root = QDir(m_dir.path()).canonicalPath() + "/device";
        QDir().mkpath(m_root);
        vmk::DriveMap::instance().setTestDrives({ { u'C', QStringLiteral("/") }, { u'E', m_root } }, u'E');
        vmk::G() = vmk::Globals {};
        vmk::G().ProgramFolder = QStringLiteral("E:\\");
        vmk::G().ProgramDrive = QStringLiteral("E:");
        vmk::S() = vmk::SettingsValues {};
        vmk::ReadSettings();
        vmk::passwords::PV() = vmk::passwords::PasswordValues {};
    }
    void TearDown() override
    {
        vmk::passwords::g_afterTemporaryStore = nullptr;
        vmk::DriveMap::instance().resetToHost();
        vmk::G() = vmk::Globals {};
        vmk::S() = vmk::SettingsValues {};
    }
    QString storePath() const { return m_root + "/PSWADMON.cnf"; }

    QTemporaryDir m_dir;
    QString m_root;
};
