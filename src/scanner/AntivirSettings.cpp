#include "scanner/Antivir.h"

namespace vmk
{

// Apart from the other binding operations so that programs without the settings
// file (vmk scan) need not link the settings store.
void PushEngineOptions()
{
    PushEngineOptions(S());
}

} // namespace vmk
