#include "components/engine/CompiledEngine.h"

#include "components/engine/EngineCode.h"
#include "components/engine/ThreatText.h"
#include "components/engine/ZipRepair.h"
#include "platform/NativeFile.h"
#include "platform/NativeName.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryFile>

#include <clamav.h>

#include <deque>
#include <map>
#include <mutex>
#include <set>

namespace vmk::engine
{
namespace
{

// One layer of the object being scanned: the name shown, and for a member of the
// scanned file itself the name it is stored under (for repair).
struct Layer {
    QByteArray shown;
    QByteArray stored;
};

struct Hit {
    std::vector<Layer> chain; // layers below the scanned file, outermost first
    QByteArray signature;
};

// State of one running scan, handed to libclamav's callbacks as their context.
struct ScanContext {
    std::vector<Layer> levels; // by recursion level; level 0 is the file itself
    std::map<int, std::vector<Layer>> byFd; // chain of the layer currently open on each descriptor
    std::deque<QByteArray> metaNames; // full stored names announced by archive parsers, not yet seen
    QByteArray topType;
    std::vector<Hit> hits;
};

void ignoreMessage(enum cl_msg, const char*, const char*, void*) { }

bool ensureLibrary()
{
    static std::once_flag once;
    static bool ok = false;
    std::call_once(once, [] {
        // libclamav prints to stderr unless a message handler is set; the program
        // reports through its own codes instead.
        cl_set_clcb_msg(ignoreMessage);
        ok = cl_init(CL_INIT_DEFAULT) == CL_SUCCESS;
    });
    return ok;
}

int onSignatureLoad(const char*, const char* name, unsigned int, void* context)
{
    const auto* options = static_cast<const EngineOptions*>(context);
    return options->wantsSignature(QByteArrayView(name ? name : "")) ? 0 : 1;
}

// libclamav gives members of mail, uuencoded and similar layers temporary names
// of its own ("clamav-<hex>.tmp"): those say nothing to the user.
bool isScratchName(const QByteArray& name)
{
    return name.startsWith("clamav-") || name.isEmpty();
}

cl_error_t onMeta(const char*, unsigned long, const char* filename, unsigned long, int, unsigned int, void* context)
{
    auto* ctx = static_cast<ScanContext*>(context);
    if (ctx && filename && *filename)
        ctx->metaNames.emplace_back(filename);
    return CL_CLEAN;
}

cl_error_t onInspect(int fd, const char* type, const char**, size_t, const char* fileName, size_t, const char*,
    uint32_t level, uint32_t attributes, void* context)
{
    auto* ctx = static_cast<ScanContext*>(context);
    if (!ctx)
        return CL_CLEAN;
    if (level == 0)
        ctx->topType = type ? QByteArray(type) : QByteArray();
    Layer layer;
    if (level > 0 && !(attributes & LAYER_ATTRIBUTES_NORMALIZED)) {
        const QByteArray base = fileName ? QByteArray(fileName) : QByteArray();
        // Archive parsers announce each member's full stored name (often all of
        // them from the central directory first); the inspection only knows the
        // base name, so take the first announced name that ends in it.
        QByteArray full;
        if (!base.isEmpty())
            for (const QByteArray& m : ctx->metaNames)
                if (m == base || m.endsWith("/" + base) || m.endsWith("\\" + base)) {
                    full = m;
                    break;
                }
        if (!full.isEmpty()) {
            std::erase(ctx->metaNames, full);
            layer = { full, full };
        } else if (!isScratchName(base)) {
            layer = { base, base };
        }
    }
    ctx->levels.resize(level + 1);
    ctx->levels[level] = layer;
    ctx->byFd[fd] = std::vector<Layer>(ctx->levels.begin() + 1, ctx->levels.end());
    return CL_CLEAN;
}

bool startsWith(const std::vector<Layer>& chain, const std::vector<Layer>& prefix)
{
    if (prefix.size() > chain.size())
        return false;
    for (size_t i = 0; i < prefix.size(); ++i)
        if (chain[i].shown != prefix[i].shown)
            return false;
    return true;
}

void onVirus(int fd, const char* name, void* context)
{
    auto* ctx = static_cast<ScanContext*>(context);
    if (!ctx || !name)
        return;
    Hit hit;
    hit.signature = name;
    auto it = ctx->byFd.find(fd);
    if (it != ctx->byFd.end())
        hit.chain = it->second;
    // PUA and heuristic matches are reported again on the way out, on an outer
    // layer (or on none): keep only the report from the layer that matched.
    for (const Hit& earlier : ctx->hits)
        if (earlier.signature == hit.signature && startsWith(earlier.chain, hit.chain))
            return;
    ctx->hits.push_back(std::move(hit));
}

bool isSignatureFile(const QString& name)
{
    static const QStringList kinds { "cvd", "cld", "cud", "db", "hdb", "hdu", "hsb", "hsu", "mdb", "mdu", "msb", "msu",
        "ndb", "ndu", "ldb", "ldu", "idb", "cdb", "cat", "crb", "cbc", "pdb", "gdb", "wdb", "fp", "sfp", "ign", "ign2",
        "ftm", "info", "yar", "yara" };
    return kinds.contains(QFileInfo(name).suffix().toLower());
}

bool folderIsWritable(const QString& folder)
{
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return false;
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral("vmk-probe-XXXXXX")));
    return probe.open();
}

// "vormak 3 (2026/11/22)" for each container, "local" for loose signature files.
QByteArray describeSet(const QString& folder)
{
    QByteArrayList parts;
    bool loose = false;
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& fi : files) {
        const QString suffix = fi.suffix().toLower();
        if (suffix == "cvd" || suffix == "cld" || suffix == "cud") {
            cl_cvd* head = cl_cvdhead(QFile::encodeName(fi.filePath()).constData());
            if (!head) {
                parts << fi.completeBaseName().toUtf8() + " ?";
                continue;
            }
            const QDateTime built = QDateTime::fromSecsSinceEpoch(head->stime);
            parts << fi.completeBaseName().toUtf8() + ' ' + QByteArray::number(head->version) + " ("
                    + built.toString(QStringLiteral("yyyy/MM/dd")).toUtf8() + ')';
            cl_cvdfree(head);
        } else if (isSignatureFile(fi.fileName())) {
            loose = true;
        }
    }
    if (loose)
        parts << "local";
    return parts.join(", ");
}

} // namespace

CompiledEngine::~CompiledEngine()
{
    if (m_engine)
        cl_engine_free(m_engine);
}

std::shared_ptr<CompiledEngine> CompiledEngine::build(
    const QString& signatureFolder, const QString& tempFolder, const EngineOptions& options, int& code)
{
    if (!ensureLibrary()) {
        code = InitFailed;
        return nullptr;
    }
    // libclamav scans every file as clean when it cannot write its scratch files,
    // so an unusable temporary folder must stop the engine from starting at all.
    if (!folderIsWritable(tempFolder)) {
        code = TempFolderUnusable;
        return nullptr;
    }
    const QDir sigDir(signatureFolder);
    bool any = false;
    if (sigDir.exists())
        for (const QString& name : sigDir.entryList(QDir::Files))
            any = any || isSignatureFile(name);
    if (!any) {
        code = SignaturesMissing;
        return nullptr;
    }

    std::shared_ptr<CompiledEngine> self(new CompiledEngine());
    self->m_builtWith = options;
    self->m_engine = cl_engine_new();
    if (!self->m_engine) {
        code = InitFailed;
        return nullptr;
    }
    cl_engine* e = self->m_engine;
    const QByteArray tmp = QFile::encodeName(tempFolder);
    cl_engine_set_str(e, CL_ENGINE_TMPDIR, tmp.constData());
    // The clean-file cache ignores scan options and costs more than it saves on
    // a first pass over a device (each file is scanned once per session).
    cl_engine_set_num(e, CL_ENGINE_DISABLE_CACHE, 1);
    // PUA categories are filtered by name here: libclamav's own category lists
    // match nothing once two or more categories are named.
    cl_engine_set_clcb_sigload(e, onSignatureLoad, &self->m_builtWith);

    unsigned signo = 0;
    const QByteArray dir = QFile::encodeName(sigDir.absolutePath());
    if (cl_load(dir.constData(), e, &signo, CL_DB_STDOPT | CL_DB_PUA) != CL_SUCCESS) {
        code = SignaturesBroken;
        return nullptr;
    }
    if (signo == 0) {
        code = SignaturesMissing;
        return nullptr;
    }
    self->m_signatures = signo;

    if (auto v = options.maxFileSize()) {
        cl_engine_set_num(e, CL_ENGINE_MAX_FILESIZE, static_cast<long long>(*v));
        // A larger file limit than the per-scan budget would never be reached.
        if (*v == 0 || *v > 400ull * 1024 * 1024)
            cl_engine_set_num(e, CL_ENGINE_MAX_SCANSIZE, static_cast<long long>(*v));
    }
    if (auto v = options.maxRecursion())
        cl_engine_set_num(e, CL_ENGINE_MAX_RECURSION, static_cast<long long>(*v));
    if (auto v = options.maxScanTimeMs())
        cl_engine_set_num(e, CL_ENGINE_MAX_SCANTIME, static_cast<long long>(*v));

    cl_engine_set_clcb_virus_found(e, onVirus);
    cl_engine_set_clcb_file_inspection(e, onInspect);
    cl_engine_set_clcb_meta(e, onMeta);

    if (cl_engine_compile(e) != CL_SUCCESS) {
        code = CompileFailed;
        return nullptr;
    }
    self->m_version = describeSet(sigDir.absolutePath());
    code = Ok;
    return self;
}

ScanOutcome CompiledEngine::scan(
    const QString& nativePath, const QByteArray& objectText, const EngineOptions& options) const
{
    ScanOutcome out;
    // By the name's real bytes: a name that is not UTF-8 is scanned like any other.
    const QByteArray path = NativeName::toBytes(nativePath);
    if (path.isEmpty()) {
        out.code = BadPath;
        return out;
    }
    // Non-blocking, so that a file swapped for a FIFO after the check cannot hang us.
    NativeFile file;
    switch (file.openRegularFile(nativePath)) {
    case NativeFile::Opened:
        break;
    case NativeFile::Missing:
        out.code = PathMissing;
        return out;
    case NativeFile::Folder:
        out.code = PathIsFolder;
        return out;
    case NativeFile::NotRegular:
        out.code = NotRegularFile;
        return out;
    case NativeFile::Unreadable:
        out.code = Unreadable;
        return out;
    }

    cl_scan_options o {};
    o.parse = options.parseFlags();
    o.general = options.generalFlags();
    o.heuristic = options.heuristicFlags();
    o.mail = options.mailFlags();

    ScanContext ctx;
    const char* virname = nullptr;
    unsigned long scanned = 0;
    const cl_error_t ret
        = cl_scandesc_callback(file.descriptor(), path.constData(), &virname, &scanned, m_engine, &o, &ctx);
    file.close();

    if (ret == CL_VIRUS && ctx.hits.empty() && virname)
        ctx.hits.push_back(Hit { {}, QByteArray(virname) });
    if (ret != CL_CLEAN && ret != CL_VIRUS && ctx.hits.empty()) {
        out.code = ClamError + static_cast<int>(ret);
        return out;
    }

    // A zip at the top can be repaired by dropping the member that holds the threat.
    const bool zipTop = ctx.topType == "CL_TYPE_ZIP";
    std::set<std::pair<QByteArray, QByteArray>> seen;
    QSet<QByteArray> toRemove;
    for (const Hit& hit : ctx.hits) {
        QByteArray object = objectText;
        for (const Layer& l : hit.chain)
            if (!l.shown.isEmpty())
                object += " --> " + l.shown;
        const ThreatText text = ThreatText::split(hit.signature);
        // The same object can match twice (raw and normalised bytes).
        if (!seen.insert({ object, text.kind + ':' + text.name }).second)
            continue;
        FoundThreat t { object, text.kind, text.name, 0 };
        if (zipTop && !hit.chain.empty() && !hit.chain.front().stored.isEmpty()) {
            t.repairable = 1;
            toRemove.insert(hit.chain.front().stored);
        }
        out.alerts.push_back(std::move(t));
    }
    if (options.repair() && !toRemove.isEmpty())
        ZipRepair::removeMembers(nativePath, toRemove);
    return out;
}

} // namespace vmk::engine
