#pragma once

#include <cstdint>

namespace vmk::engine
{

// The option numbers that setvalue understands. The numbers are the engine's
// contract with the program; everything that sends or reads an option names it
// here. What each one means for libclamav is told in EngineOptions.
struct Option {
    enum Number : int32_t {
        ArchiveScan = 3,
        ArchiveMaxSize = 4,
        ArchiveMaxRec = 5,
        MailboxScan = 8,
        HeurMacro = 9,
        HeurLevel = 10,
        ScanTimeout = 12,
        Repair = 13,
        NotifyOffice = 15,
        NotifyOfficeMacro = 16,
        DetectAdspy = 24,
        DetectDial = 25,
        DetectGame = 26,
        DetectJoke = 27,
        DetectPck = 28,
        DetectPhish = 29,
        DetectSpr = 30,
        AllAlerts = 41,
    };
};

} // namespace vmk::engine
