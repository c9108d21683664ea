#include "backup/BackupValues.h"

namespace vmk
{

BackupValues& BV()
{
    static BackupValues values;
    return values;
}

} // namespace vmk
