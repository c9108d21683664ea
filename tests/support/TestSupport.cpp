#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <filesystem>
#include <system_error>

namespace vmk::test
{

MessageRecorder::MessageRecorder(int fallback)
    : m_fallback(fallback)
{
    m_previous = SetMessageAnswerer([this](const QString& text, int kind) {
        texts << text;
        kinds << kind;
        if (m_answers.empty())
            return m_fallback;
        int a = m_answers.front();
        m_answers.pop_front();
        return a;
    });
}

MessageRecorder::~MessageRecorder()
{
    SetMessageAnswerer(m_previous);
}

void MessageRecorder::script(std::initializer_list<int> answers)
{
    m_answers.insert(m_answers.end(), answers.begin(), answers.end());
}

QString binDir()
{
    return qEnvironmentVariable("VMK_BIN", QStringLiteral(VMK_DEFAULT_BIN));
}

VmkRun runVmk(const QStringList& args, const QByteArray& input, bool withoutFileRights)
{
    QProcess p;
    if (withoutFileRights)
        p.start(QStringLiteral("setpriv"),
            QStringList { QStringLiteral("--bounding-set"), QStringLiteral("-dac_override,-dac_read_search"),
                binDir() + QStringLiteral("/vmk") }
                + args);
    else
        p.start(binDir() + QStringLiteral("/vmk"), args);
    p.write(input);
    p.closeWriteChannel();
    p.waitForFinished(120000);
    VmkRun r;
    r.code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}

QString testDataDir()
{
    return qEnvironmentVariable("VMK_TESTDATA", QStringLiteral(VMK_DEFAULT_TESTDATA));
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(bytes) == bytes.size();
}

QByteArray readFile(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    return f.readAll();
}

} // namespace vmk::test

namespace vmk::test
{

void removeTree(const QString& path)
{
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(QFile::encodeName(path).toStdString()), ignored);
}

} // namespace vmk::test
