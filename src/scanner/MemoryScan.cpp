#include "scanner/MemoryScan.h"

#include "foundation/FileServices.h"
#include "foundation/Globals.h"
#include "foundation/StartUp.h"
#include "platform/DriveMap.h"
#include "platform/ProcessSource.h"
#include "platform/Pump.h"

namespace vmk
{
namespace
{
const ProcessSource*& sourceSlot()
{
    static const ProcessSource* source = nullptr;
    return source;
}

// Pumps until the pause is lifted, at full speed: this walk has no sleep.
void waitWhilePaused(const MemoryWalkHooks& hooks)
{
    if (!hooks.paused || !hooks.paused())
        return;
    if (hooks.pauseStarted)
        hooks.pauseStarted();
    while (hooks.paused())
        DoEvents();
}

// The pump and the flags between items; true when the walk is to stop.
bool pumpAndTest(const MemoryWalkHooks& hooks)
{
    DoEvents();
    if (hooks.aborted && hooks.aborted())
        return true;
    waitWhilePaused(hooks);
    return false;
}
} // namespace

ProcessTable& Processes()
{
    static ProcessTable table;
    return table;
}

void SetProcessSource(const ProcessSource* source)
{
    sourceSlot() = source;
}

const ProcessSource& CurrentProcessSource()
{
    const ProcessSource* source = sourceSlot();
    return source ? *source : ProcessSource::host();
}

int CountProcesses()
{
    const QList<ProcessEntry> list = CurrentProcessSource().processes();
    int count = 0;
    for (qsizetype i = 0; i < list.size(); ++i) {
        DoEvents();
        ++count;
    }
    Processes().ProcessLast = count - 1;
    return count;
}

void BuildProcessList()
{
    CountProcesses();
    ProcessTable& table = Processes();
    table.Record.clear();
    const QList<ProcessEntry> list = CurrentProcessSource().processes();
    for (const ProcessEntry& e : list) {
        DoEvents();
        ProcessRecord r;
        r.ExeName = e.Name.left(e.Name.indexOf(QChar(u'\0')));
        r.ParentProcessID = e.ParentProcessID;
        r.DefaultHeapID = e.DefaultHeapID;
        r.ProcessID = e.ProcessID;
        if (e.ThreadCount > 0) {
            r.HasThreads = true;
            r.ThreadCount = e.ThreadCount;
        }
        WalkModules(r.ProcessID, r.ModuleNames, r.ModulePaths, r.ModuleLast);
        // The system's idle process (number 0) has no image either.
        const QString image = r.ProcessID == 0 ? QString() : CurrentProcessSource().imagePath(r.ProcessID);
        r.ExePath = ResolvePath(ReportedPathText(image), r.ExeName);
        table.Record << r;
    }
    table.ProcessLast = static_cast<int32_t>(table.Record.size()) - 1;
}

void WalkModules(uint32_t processId, QStringList& names, QStringList& paths, int32_t& moduleLast)
{
    if (processId == 0) {
        moduleLast = 0;
        return;
    }
    ProcessTable& table = Processes();
    int32_t count = 0;
    bool image = true;
    for (const ModuleEntry& m : CurrentProcessSource().modules(processId)) {
        DoEvents();
        ++table.ModuleTotal;
        if (image) {
            image = false;
            continue;
        }
        ++count;
        const QString name = m.Name.left(m.Name.indexOf(QChar(u'\0')));
        names << name;
        paths << ResolvePath(ReportedPathText(m.Path), name);
    }
    --table.ModuleTotal;
    moduleLast = count - 1;
}

QString ReportedPathText(const QString& native)
{
    return native.isEmpty() ? QString() : DriveMap::instance().toLogical(native);
}

QString UpperPath(const QString& path)
{
    QString out;
    out.reserve(path.size());
    for (char32_t c : path.toUcs4()) {
        const char32_t upper = QChar::toUpper(c);
        out += QString::fromUcs4(QChar::toCaseFolded(upper) == QChar::toCaseFolded(c) ? &upper : &c, 1);
    }
    return out;
}

QString MemoryScanSystemFolder()
{
    return G().SystemFolder.isEmpty() ? SystemFolderPath() : G().SystemFolder;
}

QString ResolvePath(const QString& reported, const QString& name)
{
    // The text is taken as reported, without trimming: a host name may end in a
    // space, and padding before a drive letter falls to the prefix cut below.
    QString text = UpperPath(reported);
    if (text.contains(QStringLiteral("\\SYSTEMROOT\\")))
        text.replace(QStringLiteral("\\SYSTEMROOT\\System32"), MemoryScanSystemFolder(), Qt::CaseInsensitive);
    const qsizetype colon = text.indexOf(QStringLiteral(":\\"));
    // A device prefix such as "\??\" stands before the letter; ":\" at the very
    // start leaves no letter to keep, and the text stays.
    if (!text.isEmpty() && colon != 1 && colon >= 1)
        text = text.mid(colon - 1);
    if (text.isEmpty() && !name.isEmpty()) {
        const QString candidate = MemoryScanSystemFolder() + u'\\' + name;
        if (FileExists(candidate))
            text = candidate;
    }
    return UpperPath(text);
}

void WalkMemoryTargets(const ProcessTable& table, const MemoryWalkHooks& hooks)
{
    const auto scan = [&](const QString& path) {
        if (hooks.scanPath)
            hooks.scanPath(path);
    };
    for (int32_t i = 0; i <= table.ProcessLast && i < table.Record.size(); ++i) {
        const ProcessRecord& r = table.Record[i];
        if (!r.ExePath.isEmpty())
            scan(r.ExePath);
        // The flags are first looked at after a module, never between the image and it.
        if (r.ModuleLast > 0) {
            for (int32_t m = 0; m <= r.ModuleLast && m < r.ModulePaths.size(); ++m) {
                scan(r.ModulePaths[m]);
                if (pumpAndTest(hooks))
                    break;
            }
        }
        if (pumpAndTest(hooks))
            return;
    }
}

QStringList MemoryScanTargets(const ProcessTable& table)
{
    QStringList paths;
    WalkMemoryTargets(table, MemoryWalkHooks { [&](const QString& path) { paths << path; }, {}, {}, {} });
    return paths;
}

bool IsAlreadyListed(const QStringList& threatRowTexts, const QString& textScan)
{
    return threatRowTexts.contains(textScan);
}

QString MemoryAlertRowText(const QString& textScan, const QString& textFolder, const QString& object)
{
    if (object.toUpper() == (textFolder + textScan).toUpper())
        return textScan;
    return textScan + u'/' + object;
}

} // namespace vmk
