#include "foundation/SettingKey.h"

#include <algorithm>

namespace vmk
{
namespace
{
// One row a key. UpdateProxy and "#UpdateProxySettings" are written by the
// defaults and never read; "#UpdateFrom" is recognised at start without being
// stored, so it stays empty until the dialog sets it; "#OtherLocation" is not
// among the defaults. Option 41 (all alerts) has no key: the engine binding
// sends it at its own place, the eleventh. "OwnerPassCheck" proves the owner's
// password without holding it: it is not sealed (there is nothing to hide in it)
// and the defaults do not write it, so a fresh file asks for a new password.
// "#FtpCertificate" is the SHA-256 fingerprint of the one server certificate the
// owner accepted although it does not verify ("AB:CD:..."), sealed like the other
// FTP keys; the defaults do not write it, so a fresh file trusts no such certificate.
const SettingKey kKeys[] = {
    // clang-format off
    { .Name = "ArchiveScan", .TextVariable = &SettingsValues::ArchiveScan, .Default = "0", .DefaultOrder = 1, .SaveOrder = 1, .ReadAtStart = true, .EngineOrder = 1, .EngineOption = engine::Option::ArchiveScan, .DialogOrder = 1, .DialogFrame = "Frame1", .DialogControls = { "Check1" }, .Binding = DialogBinding::Check },
    { .Name = "ArchiveMaxSize", .TextVariable = &SettingsValues::ArchiveMaxSize, .Default = "0", .DefaultOrder = 2, .SaveOrder = 2, .ReadAtStart = true, .EngineOrder = 2, .EngineOption = engine::Option::ArchiveMaxSize, .DialogOrder = 2, .DialogFrame = "Frame1", .DialogControls = { "Combo5" }, .Binding = DialogBinding::ComboZeroText },
    { .Name = "ArchiveMaxRec", .TextVariable = &SettingsValues::ArchiveMaxRec, .Default = "0", .DefaultOrder = 3, .SaveOrder = 4, .ReadAtStart = true, .EngineOrder = 3, .EngineOption = engine::Option::ArchiveMaxRec },
    { .Name = "MailboxScan", .TextVariable = &SettingsValues::MailboxScan, .Default = "0", .DefaultOrder = 4, .SaveOrder = 5, .ReadAtStart = true, .EngineOrder = 4, .EngineOption = engine::Option::MailboxScan, .DialogOrder = 4, .DialogFrame = "Frame1", .DialogControls = { "Check5" }, .Binding = DialogBinding::Check },
    { .Name = "HeurMacro", .TextVariable = &SettingsValues::HeurMacro, .Default = "1", .DefaultOrder = 5, .SaveOrder = 6, .ReadAtStart = true, .EngineOrder = 5, .EngineOption = engine::Option::HeurMacro },
    { .Name = "HeurLevel", .TextVariable = &SettingsValues::HeurLevel, .Default = "2", .DefaultOrder = 6, .SaveOrder = 7, .ReadAtStart = true, .EngineOrder = 6, .EngineOption = engine::Option::HeurLevel },
    { .Name = "ScanTimeout", .TextVariable = &SettingsValues::ScanTimeout, .Default = "0", .DefaultOrder = 7, .SaveOrder = 3, .ReadAtStart = true, .EngineOrder = 7, .EngineOption = engine::Option::ScanTimeout, .DialogOrder = 3, .DialogFrame = "Frame1", .DialogControls = { "Combo1" }, .Binding = DialogBinding::ComboZeroText },
    { .Name = "Repair", .TextVariable = &SettingsValues::Repair, .Default = "0", .DefaultOrder = 8, .SaveOrder = 8, .ReadAtStart = true, .EngineOrder = 8, .EngineOption = engine::Option::Repair },
    { .Name = "SavapiNotifyOffice", .TextVariable = &SettingsValues::SavapiNotifyOffice, .Default = "1", .DefaultOrder = 9, .SaveOrder = 9, .ReadAtStart = true, .EngineOrder = 9, .EngineOption = engine::Option::NotifyOffice },
    { .Name = "SavapiNotifyOfficeMacro", .TextVariable = &SettingsValues::SavapiNotifyOfficeMacro, .Default = "1", .DefaultOrder = 10, .SaveOrder = 10, .ReadAtStart = true, .EngineOrder = 10, .EngineOption = engine::Option::NotifyOfficeMacro },
    { .Name = "DetectAdspy", .TextVariable = &SettingsValues::DetectAdspy, .Default = "1", .DefaultOrder = 11, .SaveOrder = 11, .ReadAtStart = true, .EngineOrder = 12, .EngineOption = engine::Option::DetectAdspy, .DialogOrder = 6, .DialogFrame = "Frame1", .DialogControls = { "Check6" }, .Binding = DialogBinding::Check },
    { .Name = "DetectDial", .TextVariable = &SettingsValues::DetectDial, .Default = "1", .DefaultOrder = 12, .SaveOrder = 12, .ReadAtStart = true, .EngineOrder = 13, .EngineOption = engine::Option::DetectDial, .DialogOrder = 7, .DialogFrame = "Frame1", .DialogControls = { "Check8" }, .Binding = DialogBinding::Check },
    { .Name = "DetectGame", .TextVariable = &SettingsValues::DetectGame, .Default = "1", .DefaultOrder = 13, .SaveOrder = 13, .ReadAtStart = true, .EngineOrder = 14, .EngineOption = engine::Option::DetectGame, .DialogOrder = 9, .DialogFrame = "Frame1", .DialogControls = { "Check10" }, .Binding = DialogBinding::Check },
    { .Name = "DetectJoke", .TextVariable = &SettingsValues::DetectJoke, .Default = "1", .DefaultOrder = 14, .SaveOrder = 14, .ReadAtStart = true, .EngineOrder = 15, .EngineOption = engine::Option::DetectJoke, .DialogOrder = 8, .DialogFrame = "Frame1", .DialogControls = { "Check9" }, .Binding = DialogBinding::Check },
    { .Name = "DetectPck", .TextVariable = &SettingsValues::DetectPck, .Default = "1", .DefaultOrder = 15, .SaveOrder = 15, .ReadAtStart = true, .EngineOrder = 16, .EngineOption = engine::Option::DetectPck },
    { .Name = "DetectPhish", .TextVariable = &SettingsValues::DetectPhish, .Default = "1", .DefaultOrder = 16, .SaveOrder = 16, .ReadAtStart = true, .EngineOrder = 17, .EngineOption = engine::Option::DetectPhish },
    { .Name = "DetectSpr", .TextVariable = &SettingsValues::DetectSpr, .Default = "1", .DefaultOrder = 17, .SaveOrder = 17, .ReadAtStart = true, .EngineOrder = 18, .EngineOption = engine::Option::DetectSpr, .DialogOrder = 5, .DialogFrame = "Frame1", .DialogControls = { "Check4" }, .Binding = DialogBinding::Check },
    { .Name = "UpdateProxy", .Default = "0", .DefaultOrder = 18 },
    { .Name = "#UpdateProxySettings", .DefaultOrder = 19 },
    { .Name = "#ScanFilesOperations", .TextVariable = &SettingsValues::ScanFilesOperations, .Default = "1", .DefaultOrder = 20, .SaveOrder = 18, .ReadAtStart = true, .DialogOrder = 10, .DialogFrame = "Frame3", .DialogControls = { "Check13" }, .Binding = DialogBinding::Check },
    { .Name = "#CompFileFolder", .TextVariable = &SettingsValues::CompFileFolder, .Default = "\\Documentos Comprimidos\\", .EnglishDefault = "\\Compressed Documents\\", .FolderDefault = true, .DefaultOrder = 21, .SaveOrder = 19, .ReadAtStart = true, .DialogOrder = 11, .DialogFrame = "Frame3", .DialogControls = { "Text6" }, .Binding = DialogBinding::Text },
    { .Name = "#CompAlgorithm", .IntVariable = &SettingsValues::CompAlgorithm, .Default = "0", .DefaultOrder = 22, .SaveOrder = 20, .ReadAtStart = true, .DialogOrder = 12, .DialogFrame = "Frame3", .DialogControls = { "Combo2" }, .Binding = DialogBinding::ListIndex },
    { .Name = "#EncriptFileFolder", .TextVariable = &SettingsValues::EncriptFileFolder, .Default = "\\Documentos Encriptados\\", .EnglishDefault = "\\Encrypted Documents\\", .FolderDefault = true, .DefaultOrder = 23, .SaveOrder = 21, .ReadAtStart = true, .DialogOrder = 13, .DialogFrame = "Frame3", .DialogControls = { "Text7" }, .Binding = DialogBinding::Text },
    { .Name = "#EncripAlgorithm", .IntVariable = &SettingsValues::EncripAlgorithm, .Default = "0", .DefaultOrder = 24, .SaveOrder = 22, .ReadAtStart = true, .DialogOrder = 14, .DialogFrame = "Frame3", .DialogControls = { "Combo3" }, .Binding = DialogBinding::ListIndex },
    { .Name = "#DeleteFilesMode", .TextVariable = &SettingsValues::DeleteFilesMode, .Default = "0", .DefaultOrder = 25, .SaveOrder = 23, .ReadAtStart = true, .DialogOrder = 15, .DialogFrame = "Frame3", .DialogControls = { "Option7", "Option6", "Option8" }, .Binding = DialogBinding::OptionGroup },
    { .Name = "#UpdateFrom", .TextVariable = &SettingsValues::UpdateFrom, .Default = "0", .DefaultOrder = 26, .SaveOrder = 24, .DialogOrder = 27, .DialogFrame = "Frame2", .DialogControls = { "Option4", "Option5" }, .Binding = DialogBinding::OptionGroup },
    { .Name = "#ScanBeforeBackup", .TextVariable = &SettingsValues::ScanBeforeBackup, .Default = "1", .DefaultOrder = 27, .SaveOrder = 26, .ReadAtStart = true, .DialogOrder = 16, .DialogFrame = "Frame5", .DialogControls = { "Check17" }, .Binding = DialogBinding::Check },
    { .Name = "#BackupsFolder", .TextVariable = &SettingsValues::BackupsFolder, .Default = "\\Mis Documentos\\Respaldos\\", .EnglishDefault = "\\My Documents\\Backups\\", .FolderDefault = true, .DefaultOrder = 28, .SaveOrder = 27, .ReadAtStart = true, .DialogOrder = 17, .DialogFrame = "Frame5", .DialogControls = { "Text9" }, .Binding = DialogBinding::Text },
    { .Name = "#BCompAlgorithm", .IntVariable = &SettingsValues::BCompAlgorithm, .Default = "0", .DefaultOrder = 29, .SaveOrder = 28, .ReadAtStart = true, .DialogOrder = 18, .DialogFrame = "Frame5", .DialogControls = { "Combo6" }, .Binding = DialogBinding::ListIndex },
    { .Name = "#ScanFilesAfterUpdate", .TextVariable = &SettingsValues::ScanFilesAfterUpdate, .Default = "0", .DefaultOrder = 30, .SaveOrder = 29, .ReadAtStart = true, .DialogOrder = 26, .DialogFrame = "Frame4", .DialogControls = { "Check14" }, .Binding = DialogBinding::Check },
    { .Name = "#QuarenteneFolder", .TextVariable = &SettingsValues::QuarenteneFolder, .Default = "\\Mis Documentos\\Cuarentena\\", .EnglishDefault = "\\My Documents\\Quarentene\\", .FolderDefault = true, .DefaultOrder = 31, .SaveOrder = 30, .ReadAtStart = true, .DialogOrder = 22, .DialogFrame = "Frame4", .DialogControls = { "Text11" }, .Binding = DialogBinding::Text },
    { .Name = "#DeleteFilesAfter", .IntVariable = &SettingsValues::DeleteFilesAfter, .Default = "60", .DefaultOrder = 32, .SaveOrder = 31, .ReadAtStart = true, .DialogOrder = 25, .DialogFrame = "Frame4", .DialogControls = { "Combo4" }, .Binding = DialogBinding::Int16Text },
    { .Name = "#DeleteFilesOpt", .IntVariable = &SettingsValues::DeleteFilesOpt, .Default = "1", .DefaultOrder = 33, .SaveOrder = 32, .ReadAtStart = true, .KeptOnReload = true, .DialogOrder = 24, .DialogFrame = "Frame4", .DialogControls = { "Check15" }, .Binding = DialogBinding::CheckNumber },
    { .Name = "#DesinfectedFolder", .TextVariable = &SettingsValues::DesinfectedFolder, .Default = "\\Mis Documentos\\", .EnglishDefault = "\\My Documents\\", .FolderDefault = true, .DefaultOrder = 34, .SaveOrder = 33, .ReadAtStart = true, .KeptOnReload = true, .DialogOrder = 23, .DialogFrame = "Frame4", .DialogControls = { "Text14" }, .Binding = DialogBinding::Text },
    { .Name = "#FtpServer", .TextVariable = &SettingsValues::FtpServer, .DefaultOrder = 35, .SaveOrder = 34, .ReadAtStart = true, .KeptOnReload = true, .DialogOrder = 19, .DialogFrame = "Frame5", .DialogControls = { "Text13" }, .Binding = DialogBinding::Text },
    { .Name = "#FtpUserName", .TextVariable = &SettingsValues::FtpUserName, .DefaultOrder = 36, .SaveOrder = 35, .ReadAtStart = true, .KeptOnReload = true, .DialogOrder = 20, .DialogFrame = "Frame5", .DialogControls = { "Text10" }, .Binding = DialogBinding::Text },
    { .Name = "#FtpPassword", .TextVariable = &SettingsValues::FtpPassword, .DefaultOrder = 37, .SaveOrder = 36, .ReadAtStart = true, .KeptOnReload = true, .DialogOrder = 21, .DialogFrame = "Frame5", .DialogControls = { "Text12" }, .Binding = DialogBinding::Text },
    { .Name = "OwnerPassCheck", .TextVariable = &SettingsValues::OwnerPassCheck, .SaveOrder = 37, .ReadAtStart = true },
    { .Name = "#FtpCertificate", .TextVariable = &SettingsValues::FtpCertificate, .SaveOrder = 38, .ReadAtStart = true },
    { .Name = "#OtherLocation", .TextVariable = &SettingsValues::OtherLocation, .SaveOrder = 25, .ReadAtStart = true, .DialogOrder = 28, .DialogFrame = "Frame2", .DialogControls = { "Text1" }, .Binding = DialogBinding::Text },
    // clang-format on
};
} // namespace

bool SettingKey::sealed() const
{
    return Name[0] == '#';
}

SettingForm SettingKey::form() const
{
    if (TextVariable)
        return SettingForm::Text;
    return IntVariable ? SettingForm::Int16 : SettingForm::None;
}

QString SettingKey::clearText(const SettingsValues& values) const
{
    if (TextVariable)
        return values.*TextVariable;
    if (IntVariable)
        return QString::number(values.*IntVariable);
    return {};
}

std::optional<QString> SettingKey::defaultFor(int languageIndex) const
{
    if (languageIndex == 1 && EnglishDefault)
        return QString::fromUtf8(EnglishDefault);
    if (FolderDefault && languageIndex != 0)
        return std::nullopt;
    return QString::fromUtf8(Default);
}

std::span<const SettingKey> SettingKeys()
{
    return kKeys;
}

const SettingKey* FindSettingKey(QStringView name)
{
    for (const SettingKey& k : kKeys) {
        if (name == QLatin1StringView(k.Name))
            return &k;
    }
    return nullptr;
}

QList<const SettingKey*> SettingKeysBy(int SettingKey::*order)
{
    QList<const SettingKey*> out;
    for (const SettingKey& k : kKeys) {
        if (k.*order > 0)
            out << &k;
    }
    std::sort(
        out.begin(), out.end(), [order](const SettingKey* a, const SettingKey* b) { return a->*order < b->*order; });
    return out;
}

} // namespace vmk
