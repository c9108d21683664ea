#pragma once

class QWidget;

namespace vmk
{

// The first step of every form's load: the title and the caption of every control go
// through Translate, and every control but "LabelEspecial" takes the 9-point plain font
// (a CJK-capable one for Chinese). Each caption's design (Spanish) text is kept on the
// object, so applying again, or in another language, starts from the original text.
void ApplyLanguage(QWidget* form);

// The font family the forms use for the current language.
const char* FormFontFamily();

} // namespace vmk
