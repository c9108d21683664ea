#pragma once

#include <QString>

#include <functional>

namespace vmk
{

// Every question and notice of the program goes through ShowMessage. The screens
// install an answerer that shows the program's own message forms; tests install
// one that records the texts and returns scripted answers. Kind 0 is a notice
// (returns 0); any other kind is a yes/no question (returns 6 yes, 7 no).
using MessageAnswerer = std::function<int(const QString& text, int kind)>;

int ShowMessage(QString& text, int kind);
int ShowMessage(const QString& text, int kind = 0);

// Installs an answerer and returns the previous one.
MessageAnswerer SetMessageAnswerer(MessageAnswerer answerer);

} // namespace vmk
