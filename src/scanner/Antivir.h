#pragma once

#include "foundation/Settings.h"

#include <QList>
#include <QString>

#include <array>
#include <cstdint>

namespace vmk
{

namespace engine
{
class EngineSession;
}

// The binding to the scan engine: every part of the program that scans goes
// through these operations and the engine's six entry points behind them.

// Text out of engine memory: `length` bytes from `pointer`, NUL bytes removed
// wherever they stand (so a UTF-16 text with zero high bytes reads as plain text).
QString LiftEngineText(int32_t length, const char* pointer);

// One row of EngineSettings: the option number and the settings variable that
// carries it (null for option 41, always sent as "1").
struct EngineSetting {
    int Number;
    QString SettingsValues::*Key;
};
extern const std::array<EngineSetting, 18> EngineSettings;

// Sends the eighteen options of EngineSettings, in order, from the settings variables.
void PushEngineOptions();
void PushEngineOptions(const SettingsValues& settings);

// One alert of a scanned file as the program shows it.
struct AlertRow {
    QString Object; // the file, or the member inside it
    QString ThreatKind;
    QString ThreatName;
    QString Threat; // ThreatKind + ":" + ThreatName
    bool Repairable = false;
};

// The result of scanning one file the way every caller does it.
struct FileScanResult {
    int ReturnCode = 0;
    int AlertCount = 0;
    QList<AlertRow> Rows; // read only when ReturnCode is 0 and AlertCount is 1 or more

    bool processed() const { return ReturnCode == 0; }
    bool infected() const { return ReturnCode == 0 && AlertCount >= 1; }
};

// ScanFile, then (when infected) ReadAlert for every alert with the three lifted
// texts. `session` lets a worker thread scan with its own alerts; by default the
// program's single engine session is used.
FileScanResult ScanOneFile(const QString& path, engine::EngineSession* session = nullptr);

// "Error: N" for a file the engine could not process.
QString NotProcessedText(int returnCode);

// The side scan of the file verbs: asks whether an infected file is to be left
// out, sets G().ExcludeFile and returns it. An engine error counts as clean.
bool SideScanForExclusion(const QString& path);

} // namespace vmk
