#pragma once

#include <QString>

namespace vmk::eject
{

// The helper's one argument, "<language index>|<drive>", and the device folder
// it names. The letter is mapped the way every process of the suite maps it:
// Vormak hands its drive table down through the environment, so a device given
// with --device is found again behind its letter.
class EjectTarget
{
public:
    bool Parse(const QString& argument);
    int LanguageIndex() const { return m_language; }
    const QString& Drive() const { return m_drive; }
    // The native folder of the device, or empty when the drive is unknown.
    QString NativeRoot() const;

private:
    int m_language = 0;
    QString m_drive;
};

} // namespace vmk::eject
