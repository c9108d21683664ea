#include "components/engine/EngineOptions.h"

#include <clamav.h>

#include <array>

namespace vmk::engine
{
namespace
{

// Options that change what a compiled engine holds (limits, loaded signatures).
bool isEngineLevel(int number)
{
    switch (number) {
    case Option::ArchiveMaxSize:
    case Option::ArchiveMaxRec:
    case Option::ScanTimeout:
    case Option::DetectAdspy:
    case Option::DetectDial:
    case Option::DetectGame:
    case Option::DetectJoke:
    case Option::DetectPck:
    case Option::DetectPhish:
    case Option::DetectSpr:
        return true;
    default:
        return false;
    }
}

struct CategorySwitch {
    int number;
    std::array<const char*, 3> categories; // PUA category words of the switch (nullptr ends)
};

// ClamAV names PUA signatures "PUA.<Platform>.<Category>.<Name>"; each switch
// covers the category words the official sets and ours use for that kind.
constexpr std::array<CategorySwitch, 7> kSwitches { {
    { Option::DetectAdspy, { "Adware", "Spyware", "Spy" } },
    { Option::DetectDial, { "Dialer", "Dial", nullptr } },
    { Option::DetectGame, { "Game", nullptr, nullptr } },
    { Option::DetectJoke, { "Joke", nullptr, nullptr } },
    { Option::DetectPck, { "Packer", "Packed", nullptr } },
    { Option::DetectPhish, { "Phishing", "Phish", nullptr } },
    { Option::DetectSpr, { "Tool", "Spr", "Riskware" } },
} };

} // namespace

EngineOptions::EngineOptions()
{
    m_values = {
        { Option::ArchiveScan, "1" },
        { Option::ArchiveMaxSize, "0" },
        { Option::ArchiveMaxRec, "0" },
        { Option::MailboxScan, "1" },
        { Option::HeurMacro, "1" },
        { Option::HeurLevel, "1" },
        { Option::ScanTimeout, "0" },
        { Option::Repair, "0" },
        { Option::NotifyOffice, "1" },
        { Option::NotifyOfficeMacro, "1" },
        { Option::AllAlerts, "1" },
        { Option::DetectAdspy, "1" },
        { Option::DetectDial, "1" },
        { Option::DetectGame, "1" },
        { Option::DetectJoke, "1" },
        { Option::DetectPck, "1" },
        { Option::DetectPhish, "1" },
        { Option::DetectSpr, "1" },
    };
}

bool EngineOptions::known(int number) const
{
    return m_values.count(number) != 0;
}

bool EngineOptions::set(int number, const QByteArray& value)
{
    // Unknown numbers are kept too (the program never checks), they just mean nothing.
    const QByteArray trimmed = value.trimmed();
    auto it = m_values.find(number);
    if (it != m_values.end() && it->second == trimmed)
        return false;
    m_values[number] = trimmed;
    return isEngineLevel(number);
}

QByteArray EngineOptions::value(int number) const
{
    auto it = m_values.find(number);
    return it == m_values.end() ? QByteArray() : it->second;
}

bool EngineOptions::isOn(int number) const
{
    return level(number) > 0;
}

int EngineOptions::level(int number) const
{
    bool ok = false;
    const int v = value(number).toInt(&ok);
    return ok ? v : 0;
}

bool EngineOptions::heuristicsOn() const
{
    return level(Option::HeurLevel) >= 1;
}

uint32_t EngineOptions::parseFlags() const
{
    // Executables, documents and web content are always parsed; archives, mail
    // and office files follow their switches.
    uint32_t f = CL_SCAN_PARSE_ELF | CL_SCAN_PARSE_PDF | CL_SCAN_PARSE_SWF | CL_SCAN_PARSE_HWP3 | CL_SCAN_PARSE_HTML
        | CL_SCAN_PARSE_PE | CL_SCAN_PARSE_ONENOTE | CL_SCAN_PARSE_IMAGE;
    if (isOn(Option::ArchiveScan))
        f |= CL_SCAN_PARSE_ARCHIVE;
    if (isOn(Option::MailboxScan))
        f |= CL_SCAN_PARSE_MAIL;
    if (isOn(Option::NotifyOffice))
        f |= CL_SCAN_PARSE_OLE2 | CL_SCAN_PARSE_XMLDOCS;
    return f;
}

uint32_t EngineOptions::generalFlags() const
{
    uint32_t f = 0;
    if (isOn(Option::AllAlerts))
        f |= CL_SCAN_GENERAL_ALLMATCHES;
    if (heuristicsOn())
        f |= CL_SCAN_GENERAL_HEURISTICS;
    // Precedence also makes libclamav report PUA and heuristic matches on the
    // layer where they occur, which is how all-alerts mode names their member.
    if (level(Option::HeurLevel) >= 2 || isOn(Option::AllAlerts))
        f |= CL_SCAN_GENERAL_HEURISTIC_PRECEDENCE;
    return f;
}

uint32_t EngineOptions::heuristicFlags() const
{
    uint32_t f = 0;
    // libclamav lets every limit fail open; with heuristics on an exceeded limit
    // is reported instead of passing the file as clean.
    if (heuristicsOn())
        f |= CL_SCAN_HEURISTIC_EXCEEDS_MAX | CL_SCAN_HEURISTIC_ENCRYPTED_ARCHIVE;
    if (isOn(Option::HeurMacro))
        f |= CL_SCAN_HEURISTIC_MACROS;
    if (isOn(Option::NotifyOfficeMacro))
        f |= CL_SCAN_HEURISTIC_ENCRYPTED_DOC;
    return f;
}

std::optional<uint64_t> EngineOptions::parseSize(QByteArrayView text)
{
    QByteArray t = text.toByteArray().trimmed().toUpper();
    if (t.endsWith('B') && t.size() > 1 && !QByteArrayView(t).chopped(1).isEmpty()
        && QByteArrayView("KMG").contains(t.at(t.size() - 2)))
        t.chop(1); // "50MB" reads as "50M"
    uint64_t unit = 1;
    if (!t.isEmpty()) {
        switch (t.back()) {
        case 'K':
            unit = 1024ull;
            break;
        case 'M':
            unit = 1024ull * 1024;
            break;
        case 'G':
            unit = 1024ull * 1024 * 1024;
            break;
        default:
            break;
        }
        if (unit != 1)
            t.chop(1);
    }
    bool ok = false;
    const qulonglong n = t.toULongLong(&ok);
    if (!ok)
        return std::nullopt;
    return n * unit;
}

std::optional<uint64_t> EngineOptions::maxFileSize() const
{
    auto bytes = parseSize(value(Option::ArchiveMaxSize));
    if (!bytes)
        return std::nullopt;
    return *bytes; // 0: no limit
}

std::optional<uint32_t> EngineOptions::maxRecursion() const
{
    const int n = level(Option::ArchiveMaxRec);
    if (n <= 0)
        return std::nullopt; // "0": the engine's own depth
    return static_cast<uint32_t>(n);
}

std::optional<uint64_t> EngineOptions::maxScanTimeMs() const
{
    bool ok = false;
    const qlonglong seconds = value(Option::ScanTimeout).trimmed().toLongLong(&ok);
    if (!ok || seconds < 0)
        return std::nullopt;
    return static_cast<uint64_t>(seconds) * 1000; // 0: never
}

bool EngineOptions::wantsSignature(QByteArrayView name) const
{
    if (!name.startsWith("PUA."))
        return true;
    const QList<QByteArray> parts = name.toByteArray().split('.');
    if (parts.size() < 3)
        return true;
    const QByteArray& category = parts.at(2);
    for (const auto& sw : kSwitches)
        for (const char* c : sw.categories)
            if (c && category.compare(c, Qt::CaseInsensitive) == 0)
                return isOn(sw.number);
    return true;
}

} // namespace vmk::engine
