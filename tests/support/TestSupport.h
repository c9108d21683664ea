#pragma once

#include <QString>
#include <QStringList>

#include "foundation/Messages.h"

#include <deque>

namespace vmk::test
{

// Answers ShowMessage for the length of a test: records every text and kind and
// returns scripted answers (6 yes, 7 no) in order, then `fallback`.
class MessageRecorder
{
public:
    explicit MessageRecorder(int fallback = 7);
    ~MessageRecorder();
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    void script(std::initializer_list<int> answers);
    QStringList texts;
    QList<int> kinds;

private:
    std::deque<int> m_answers;
    int m_fallback;
    MessageAnswerer m_previous;
};

// Folder of the built programs (build/bin) and of the test data (tests/data).
QString binDir();
QString testDataDir();

// Writes bytes to a file, creating folders; returns false on failure.
bool writeFile(const QString& path, const QByteArray& bytes);
QByteArray readFile(const QString& path);
// Removes a tree whose names need not be UTF-8 (QDir cannot reach those).
void removeTree(const QString& path);

// One run of the built vmk: its exit code (-1 when it crashed) and its two outputs.
struct VmkRun {
    int code = -1;
    QString out, err;
};
// `input` goes to its standard input. With `withoutFileRights`, vmk runs without
// root's power to read any file (as a user would), so a mode 000 file is unreadable.
VmkRun runVmk(const QStringList& args, const QByteArray& input = {}, bool withoutFileRights = false);

} // namespace vmk::test
