#pragma once

#include "foundation/Settings.h"
#include "platform/FileSearch.h"
#include "scanner/EngineSetting.h"
#include "scanner/FileScanResult.h"

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

// The options sent by PushEngineOptions, in their order: the engine-bound keys
// of the settings table (SettingKey::EngineOrder) with option 41 at its place.
const std::array<EngineSetting, 18>& EngineSettings();

// Sends the eighteen options of EngineSettings, in order, from the settings variables.
void PushEngineOptions();
void PushEngineOptions(const SettingsValues& settings);

// ScanFile, then (when infected) ReadAlert for every alert with the three lifted
// texts. `session` lets a worker thread scan with its own alerts; by default the
// program's single engine session is used.
FileScanResult ScanOneFile(const QString& path, engine::EngineSession* session = nullptr);

// "Error: N" for a file the engine could not process.
QString NotProcessedText(int returnCode);

// Why a walk does not scan an entry that is not a file (a dangling link, a FIFO,
// a socket, a device), translated.
QString NotScannedText(EntryKind kind);

// The side scan of the file verbs: asks whether an infected file is to be left
// out, sets G().ExcludeFile and returns it. An engine error counts as clean.
bool SideScanForExclusion(const QString& path);
// The same question for a file already scanned (ahead of a walk, or under another
// name than the one the user knows): `shownPath` is the path the question names.
bool SideScanForExclusion(const QString& shownPath, const FileScanResult& result);

} // namespace vmk
