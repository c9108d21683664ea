#pragma once

#include "components/engine/Option.h"
#include "foundation/Settings.h"

#include <QList>
#include <QString>
#include <QStringView>

#include <array>
#include <optional>
#include <span>

namespace vmk
{

// How a key's value lives in memory, told by which variable it has.
enum class SettingForm {
    None, // no variable: written by the defaults, never read
    Text, // a QString variable, kept as the clear text
    Int16, // an int variable holding a 16-bit integer, written as decimal text
};

// How the settings dialog binds its control to the setting.
enum class DialogBinding {
    None, // no control: the setting is changed only in the file
    Check, // check box, its value as decimal text
    CheckNumber, // check box, its value as a number (an Int16 setting)
    ComboZeroText, // combo whose first item stands for "0" and stores "0"; any other text is stored as it stands
    ListIndex, // combo, its list index (an Int16 setting)
    Text, // text box, stored at each change
    Int16Text, // combo text turned into a 16-bit integer at each change
    OptionGroup, // option buttons: DialogControls[i] stores the decimal text of i
};

// One key of VMK.cnf and every fact about it. The reader, both writers, the
// engine binding and the settings dialog all work from the rows of SettingKeys();
// none of them keeps a list of keys of its own.
struct SettingKey {
    const char* Name = nullptr; // as in the file, e.g. "#QuarenteneFolder"
    QString SettingsValues::*TextVariable = nullptr; // the variable of a Text key
    int SettingsValues::*IntVariable = nullptr; // the variable of an Int16 key

    // The first value: Spanish (LanguageIndex 0), and English where it differs.
    // A folder key's line is written only for those two languages.
    const char* Default = "";
    const char* EnglishDefault = nullptr;
    bool FolderDefault = false;

    int DefaultOrder = 0; // line of WriteDefaultSettings, from 1; 0: not written
    int SaveOrder = 0; // line of WriteSettings (the dialog's save), from 1; 0: not written
    bool ReadAtStart = false; // ReadSettings stores the value; otherwise the line is passed over
    bool KeptOnReload = false; // ReloadSettings leaves the variable as the dialog set it

    int EngineOrder = 0; // place among PushEngineOptions' calls, from 1; 0: not an engine option
    engine::Option::Number EngineOption = engine::Option::Number {}; // meaningful when EngineOrder > 0

    int DialogOrder = 0; // row among the settings dialog's controls, from 1; 0: no control
    const char* DialogFrame = nullptr; // the page that holds the control, e.g. "Frame1"
    std::array<const char*, 3> DialogControls {}; // e.g. "Check1"; an option group names one per value
    DialogBinding Binding = DialogBinding::None;

    // True for the keys whose value is sealed in the file: those that begin with "#".
    bool sealed() const;
    // Text, Int16, or None for a key without a variable.
    SettingForm form() const;
    // The variable's value as clear text (integers in decimal); "" for a key without one.
    QString clearText(const SettingsValues& values) const;
    // The first value for a language; nullopt when the defaults write no line then.
    std::optional<QString> defaultFor(int languageIndex) const;
};

// Every key of VMK.cnf, in the order of WriteDefaultSettings (then "#OtherLocation").
std::span<const SettingKey> SettingKeys();
// The key named exactly so (keys are case-sensitive); nullptr for an unknown one.
const SettingKey* FindSettingKey(QStringView name);
// The keys that have a place in one order (DefaultOrder, SaveOrder, EngineOrder or
// DialogOrder), sorted by it.
QList<const SettingKey*> SettingKeysBy(int SettingKey::*order);

} // namespace vmk
