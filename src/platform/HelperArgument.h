#pragma once

#include <QString>

#include <optional>

namespace vmk
{

// The one path that the removal helpers (Unlock.exe, Delete.exe) take, as a
// native path: a drive-letter path goes through the drive map, a host path passes.
// It must come as exactly one argument, absolute and without "." or ".."
// components: a helper that removes never guesses which file was meant. Otherwise
// the reason goes to standard error and nothing is given; the helper exits with 2.
std::optional<QString> HelperPathArgument(const char* toolName);

} // namespace vmk
