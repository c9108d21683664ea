#pragma once

#include <QString>

#include <optional>

namespace vmk
{

// The one quoted path that the removal helpers (Unlock.exe, Delete.exe) take, as a
// native path: a drive-letter path goes through the drive map, a host path passes.
// On a missing argument or an unknown drive it prints the reason to standard error
// and gives nothing; the helper then exits with 2.
std::optional<QString> HelperPathArgument(const char* toolName);

} // namespace vmk
