#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>

namespace vmk
{

// The animation strip of the progress forms. The program opens it on the name of an
// animation file beside the executable ("\FileCopy.avi", "\Filedel.avi"); the strip
// draws the matching picture itself (a sheet flying between folders, a sheet falling
// into the bin, or a sheet arriving from the network), so a missing file changes nothing.
class AnimationArea : public QWidget
{
    Q_OBJECT
public:
    enum class Kind { Copy, Delete, Download };

    explicit AnimationArea(QWidget* parent = nullptr);

    // Opens the animation named by `file` and plays it.
    void Open(const QString& file);
    void Play();
    void Stop();
    void Close();

    Kind kind() const { return m_kind; }
    bool isPlaying() const { return m_timer.isActive(); }
    QString fileName() const { return m_file; }
    int frame() const { return m_frame; }

    static Kind KindOfFile(const QString& file);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void tick();

    QTimer m_timer;
    Kind m_kind = Kind::Copy;
    QString m_file;
    int m_frame = 0;
    bool m_open = false;
};

} // namespace vmk
