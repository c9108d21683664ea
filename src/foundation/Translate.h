#pragma once

#include <QString>

#include <array>
#include <vector>

namespace vmk {

// The text in the language of G().LanguageIndex; an unknown text comes back unchanged.
QString Translate(const QString& text);

// One row of the translation table: the Spanish key and its English, German,
// Portuguese, French and Italian texts (languages 1 to 5).
struct TranslationRow {
    QString key;
    std::array<QString, 5> cells;
};

// The whole table in look-up order, loaded once from the data compiled into the program.
const std::vector<TranslationRow>& TranslationTable();

}  // namespace vmk
