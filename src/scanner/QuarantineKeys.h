#pragma once

#include <QString>

namespace vmk::scanner
{

// Every quarantined item is sealed under one fixed pass phrase with cipher index
// 0, whoever owns the run. This guard puts them into the shared state for its
// lifetime and gives the owner's back when it ends: left set, they would seal the
// owner's later files under the quarantine's phrase. With `stopScanning`, the
// transfer's scan of what it moves (#ScanFilesOperations) is off as well.
class QuarantineKeys
{
public:
    static QString passPhrase() { return QStringLiteral("PKWDtorbel"); }
    static constexpr int kAlgorithm = 0;

    explicit QuarantineKeys(bool stopScanning = false);
    ~QuarantineKeys();
    QuarantineKeys(const QuarantineKeys&) = delete;
    QuarantineKeys& operator=(const QuarantineKeys&) = delete;

private:
    int m_algorithm;
    QString m_passPhrase;
    QString m_scanFilesOperations;
    bool m_stopScanning;
};

} // namespace vmk::scanner
