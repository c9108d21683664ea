#include "CliFailure.h"

#include "foundation/Translate.h"

#include <utility>

CliFailure::CliFailure(QString subject, QString words, int number, int exitCode, bool usage)
    : m_subject(std::move(subject))
    , m_words(std::move(words))
    , m_number(number)
    , m_exitCode(exitCode)
    , m_usage(usage)
{
}

CliFailure CliFailure::usage(QString subject, QString words)
{
    return CliFailure(std::move(subject), std::move(words), -1, kError, true);
}

QString CliFailure::text() const
{
    return line(m_subject, m_words, m_number);
}

QString CliFailure::line(const QString& subject, const QString& words, int number)
{
    QString text = vmk::Translate(words);
    if (!subject.isEmpty())
        text = subject + QStringLiteral(": ") + text;
    if (number >= 0)
        text += QStringLiteral(" (") + QString::number(number) + u')';
    return text;
}
