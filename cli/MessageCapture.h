#pragma once

#include "foundation/Messages.h"

#include <QStringList>

// While it lives, the notices that the program's code shows through
// ShowMessage are kept here instead of reaching the console: a command that
// words a failure itself (with the file's name and the reason) reads them back
// or drops them. Questions are answered "no", as on the console.
class MessageCapture
{
public:
    MessageCapture()
    {
        m_previous = vmk::SetMessageAnswerer([this](const QString& text, int kind) {
            m_texts << text;
            return kind == 0 ? 0 : 7;
        });
    }
    ~MessageCapture() { vmk::SetMessageAnswerer(m_previous); }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

    const QStringList& texts() const { return m_texts; }

private:
    vmk::MessageAnswerer m_previous;
    QStringList m_texts;
};
