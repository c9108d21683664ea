#pragma once

#include <QString>

namespace vmk {

// The text in the language of G().LanguageIndex; an unknown text comes back unchanged.
QString Translate(const QString& text);

}  // namespace vmk
