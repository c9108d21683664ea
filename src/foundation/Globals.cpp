#include "foundation/Globals.h"

namespace vmk
{

Globals& G()
{
    static Globals g;
    return g;
}

} // namespace vmk
