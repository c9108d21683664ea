#include "Updater.h"

#include "SignatureSource.h"
#include "components/engine/CompiledEngine.h"
#include "components/engine/EngineOptions.h"
#include "platform/FileReplace.h"

#include <QCryptographicHash>
#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <clamav.h>

namespace vmk::avupdate
{
namespace
{

bool isContainer(const QString& name)
{
    const QString s = QFileInfo(name).suffix().toLower();
    return s == "cvd" || s == "cld" || s == "cud";
}

struct Head {
    unsigned version = 0;
    qint64 built = 0;
};

bool readHead(const QString& file, Head& out)
{
    cl_cvd* h = cl_cvdhead(QFile::encodeName(file).constData());
    if (!h)
        return false;
    out = Head { h->version, static_cast<qint64>(h->stime) };
    cl_cvdfree(h);
    return true;
}

QByteArray sha256Of(const QString& file)
{
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash h(QCryptographicHash::Sha256);
    h.addData(&f);
    return h.result().toHex();
}

bool copyFolder(const QString& from, const QString& to)
{
    QDir().mkpath(to);
    for (const QFileInfo& fi : QDir(from).entryInfoList(QDir::Files))
        if (!QFile::copy(fi.filePath(), QDir(to).filePath(fi.fileName())))
            return false;
    return true;
}

} // namespace

Updater::Updater(const QString& programFolder, UpdateLog& log)
    : m_folder(programFolder)
    , m_log(log)
{
}

QString Updater::path(const QString& name) const
{
    return QDir(m_folder).filePath(name);
}

Updater::Outcome Updater::fail(const QString& reason)
{
    QDir(path("sigs.new")).removeRecursively();
    QDir(path("sigs.download")).removeRecursively();
    m_log.line(QStringLiteral("Update error: ") + reason);
    return Failed;
}

void Updater::recoverInterruptedSwap()
{
    // Cut between the two renames: the old set is complete in sigs.old.
    if (!QFileInfo(path("sigs")).isDir() && QFileInfo(path("sigs.old")).isDir()) {
        FileReplace::move(path("sigs.old"), path("sigs"));
        m_log.line(QStringLiteral("Restored the signature set of an interrupted update"));
    }
    QDir(path("sigs.old")).removeRecursively();
    QDir(path("sigs.new")).removeRecursively();
    QDir(path("sigs.download")).removeRecursively();
}

Updater::Outcome Updater::run(const UpdateConfig& config)
{
    recoverInterruptedSwap();
    const QString current = path("sigs");
    const QString download = path("sigs.download");
    if (!QDir().mkpath(download))
        return fail(QStringLiteral("cannot create %1").arg(download));

    // The first source that answers gives the files.
    QStringList fetched;
    QString lastError;
    bool answered = false;
    for (const QString& location : config.sources) {
        SignatureSource source(location, m_folder, config.timeoutSeconds);
        m_log.line(QStringLiteral("Source %1").arg(location));
        fetched.clear();
        bool failed = false;
        for (const QString& name : config.files) {
            QString error;
            const auto r = source.fetch(name, QDir(download).filePath(name), error);
            if (r == SignatureSource::Fetched) {
                fetched << name;
            } else if (r == SignatureSource::Failed) {
                lastError = error;
                failed = true;
                break;
            }
        }
        if (!failed && !fetched.isEmpty()) {
            answered = true;
            break;
        }
        if (!failed)
            lastError = QStringLiteral("%1 holds none of %2").arg(location, config.files.join(' '));
        m_log.line(QStringLiteral("Source %1 failed: %2").arg(location, lastError));
    }
    if (!answered)
        return fail(lastError);

    // Newer: a container with a higher version, or a loose file with other contents.
    QStringList newer;
    for (const QString& name : fetched) {
        const QString got = QDir(download).filePath(name);
        const QString have = QDir(current).filePath(name);
        if (isContainer(name)) {
            Head head, old;
            if (!readHead(got, head))
                return fail(QStringLiteral("%1 is damaged (no valid header)").arg(name));
            const bool haveOld = QFileInfo::exists(have) && readHead(have, old);
            const QString installed = haveOld ? QString::number(old.version) : QStringLiteral("none");
            m_log.line(QStringLiteral("%1: version %2, installed %3").arg(name).arg(head.version).arg(installed));
            if (!haveOld || head.version > old.version)
                newer << name;
        } else if (!QFileInfo::exists(have) || sha256Of(got) != sha256Of(have)) {
            m_log.line(QStringLiteral("%1: changed").arg(name));
            newer << name;
        }
    }
    if (newer.isEmpty()) {
        QDir(download).removeRecursively();
        m_log.line(QStringLiteral("Nothing to update"));
        return NothingNew;
    }

    // Build the new set beside the old one and prove that it loads.
    const QString staged = path("sigs.new");
    if ((QFileInfo(current).isDir() && !copyFolder(current, staged)) || !QDir().mkpath(staged))
        return fail(QStringLiteral("cannot prepare %1").arg(staged));
    for (const QString& name : newer) {
        const QString target = QDir(staged).filePath(name);
        QFile::remove(target);
        if (!QFile::copy(QDir(download).filePath(name), target))
            return fail(QStringLiteral("cannot place %1").arg(name));
    }
    int code = 0;
    auto engine = engine::CompiledEngine::build(staged, QDir::tempPath(), engine::EngineOptions(), code);
    if (!engine)
        return fail(QStringLiteral("the new signatures do not load (%1)").arg(code));
    m_log.line(QStringLiteral("New set loads: %1 signatures").arg(engine->signatureCount()));
    engine.reset();

    // The two sets change names in one step, so "sigs" is never missing: a run cut
    // after the exchange leaves the old set in sigs.new, which the next run clears.
    // Where the filesystem cannot exchange, two renames, with sigs.old as the
    // state that recoverInterruptedSwap repairs.
    if (QFileInfo(current).isDir()) {
        if (!FileReplace::exchange(staged, current)) {
            const QString old = path("sigs.old");
            if (!FileReplace::move(current, old))
                return fail(QStringLiteral("cannot move the old set aside"));
            if (!FileReplace::move(staged, current)) {
                FileReplace::move(old, current);
                return fail(QStringLiteral("cannot put the new set in place"));
            }
            QDir(old).removeRecursively();
        }
        QDir(staged).removeRecursively();
    } else if (!FileReplace::move(staged, current)) {
        return fail(QStringLiteral("cannot put the new set in place"));
    }
    QDir(download).removeRecursively();
    QString error;
    if (!writeIndex(error))
        return fail(error);
    m_log.line(QStringLiteral("Updated: %1").arg(newer.join(' ')));
    m_log.line(QStringLiteral("Update finished"));
    return Updated;
}

bool Updater::writeIndex(QString& error)
{
    const QString current = path("sigs");
    int code = 0;
    auto engine = engine::CompiledEngine::build(current, QDir::tempPath(), engine::EngineOptions(), code);
    if (!engine) {
        error = QStringLiteral("the signatures in %1 do not load (%2)").arg(current).arg(code);
        return false;
    }
    unsigned version = 0;
    qint64 newest = 0;
    QByteArray lines;
    for (const QFileInfo& fi : QDir(current).entryInfoList(QDir::Files, QDir::Name)) {
        QString date = fi.lastModified().toString(QStringLiteral("yyyyMMdd"));
        unsigned v = 0;
        if (isContainer(fi.fileName())) {
            Head head;
            if (readHead(fi.filePath(), head)) {
                v = head.version;
                version = std::max(version, v);
                newest = std::max(newest, head.built);
                date = QDateTime::fromSecsSinceEpoch(head.built).toString(QStringLiteral("yyyyMMdd"));
            }
        }
        lines += (fi.fileName() + '=' + date + '_' + QString::number(v) + '_').toUtf8() + sha256Of(fi.filePath())
            + "\r\n";
    }
    // The set's date is that of its newest container, or today for loose files only.
    const QString setDate = newest ? QDateTime::fromSecsSinceEpoch(newest).toString(QStringLiteral("yyyyMMdd"))
                                   : QDate::currentDate().toString(QStringLiteral("yyyyMMdd"));
    const QByteArray first
        = QStringLiteral("Signatures=%1_%2_%3\r\n").arg(setDate).arg(version).arg(engine->signatureCount()).toUtf8();
    QDir().mkpath(path("idx"));
    QSaveFile f(path("idx/master.idx"));
    if (!f.open(QIODevice::WriteOnly) || f.write(first + lines) < 0 || !f.commit()) {
        error = QStringLiteral("cannot write idx/master.idx");
        return false;
    }
    return true;
}

} // namespace vmk::avupdate
