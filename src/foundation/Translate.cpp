#include "foundation/Translate.h"

namespace vmk {

// Placeholder until the translation table lands: every text stays Spanish.
QString Translate(const QString& text)
{
    return text;
}

}  // namespace vmk
