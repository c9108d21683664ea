#pragma once

#include "components/engine/Option.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <cstdint>
#include <map>
#include <optional>

namespace vmk::engine
{

// The options that setvalue receives (numbered in Option), kept as the texts they
// were given, and what they mean for libclamav. Options that act per scan (parsers,
// heuristics, repair) are read at each ScanFile; the others (limits, which PUA
// categories are loaded) are fixed when an engine is compiled, so changing one of
// them makes the compiled engine stale.
class EngineOptions
{
public:
    // The engine's built-in options: what a freshly loaded engine runs on until
    // the program pushes its settings.
    EngineOptions();

    // Stores the text; returns true when a compiled engine must be rebuilt for it.
    bool set(int number, const QByteArray& value);
    QByteArray value(int number) const;
    bool known(int number) const;

    // Per-scan flags in libclamav's cl_scan_options terms.
    uint32_t parseFlags() const;
    uint32_t generalFlags() const;
    uint32_t heuristicFlags() const;
    uint32_t mailFlags() const { return 0; }
    bool repair() const { return isOn(Option::Repair); }
    bool heuristicsOn() const;

    // Engine limits; nullopt keeps libclamav's default.
    std::optional<uint64_t> maxFileSize() const;
    std::optional<uint32_t> maxRecursion() const;
    std::optional<uint64_t> maxScanTimeMs() const;

    // Whether a PUA signature (named "PUA.<Platform>.<Category>.<Name>") is wanted
    // under the category switches. Non-PUA names are always wanted.
    bool wantsSignature(QByteArrayView signatureName) const;

    // Parses "50M", "1G", "512K", "1000" into bytes; nullopt for text that is none of them.
    static std::optional<uint64_t> parseSize(QByteArrayView text);

private:
    bool isOn(int number) const;
    int level(int number) const;

    std::map<int, QByteArray> m_values;
};

} // namespace vmk::engine
