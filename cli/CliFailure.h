#pragma once

#include <QString>

#include <exception>

// Why a command cannot go on: what it concerns (a file, an archive entry, an
// option), what went wrong in words (a Spanish text of the translation table)
// and, where a component gave one, its number. main() prints it as
// "vmk COMMAND: SUBJECT: WORDS (N)" and ends with the exit code.
class CliFailure : public std::exception
{
public:
    static constexpr int kRefused = 1; // the data was refused: a wrong pass phrase, a damaged file
    static constexpr int kError = 2; // the command could not run

    CliFailure(QString subject, QString words, int number = -1, int exitCode = kError, bool usage = false);

    // Another way to use the command is the likely cure: main() points at --help.
    static CliFailure usage(QString subject, QString words);

    // "SUBJECT: WORDS (N)", the words translated.
    QString text() const;
    int exitCode() const { return m_exitCode; }
    bool isUsage() const { return m_usage; }
    const char* what() const noexcept override { return "vmk command failure"; }

    // The same line for a failure that does not end the command (one file of a scan).
    static QString line(const QString& subject, const QString& words, int number = -1);

private:
    QString m_subject, m_words;
    int m_number, m_exitCode;
    bool m_usage;
};
