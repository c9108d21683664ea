#pragma once

#include "components/engine/Option.h"
#include "foundation/Settings.h"

#include <QString>

namespace vmk
{

// One row of EngineSettings: the option number and the settings variable that
// carries it (null for option 41, always sent as "1").
struct EngineSetting {
    engine::Option::Number Number;
    QString SettingsValues::*Key;
};

} // namespace vmk
