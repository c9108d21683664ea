#include "scanner/QuarantineKeys.h"

#include "foundation/Globals.h"
#include "foundation/Settings.h"

namespace vmk::scanner
{

QuarantineKeys::QuarantineKeys(bool stopScanning)
    : m_algorithm(S().EncripAlgorithm)
    , m_passPhrase(G().PassPhrase)
    , m_scanFilesOperations(S().ScanFilesOperations)
    , m_stopScanning(stopScanning)
{
    S().EncripAlgorithm = kAlgorithm;
    G().PassPhrase = passPhrase();
    if (m_stopScanning)
        S().ScanFilesOperations = QStringLiteral("0");
}

QuarantineKeys::~QuarantineKeys()
{
    S().EncripAlgorithm = m_algorithm;
    G().PassPhrase = m_passPhrase;
    if (m_stopScanning)
        S().ScanFilesOperations = m_scanFilesOperations;
}

} // namespace vmk::scanner
