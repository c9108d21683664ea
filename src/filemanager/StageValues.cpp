#include "filemanager/StageValues.h"

namespace vmk
{

StageValues& SV()
{
    static StageValues values;
    return values;
}

} // namespace vmk
