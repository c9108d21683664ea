#pragma once

#include <QHash>
#include <QWidget>

class QCheckBox;
class QFrame;
class QGridLayout;
class QLineEdit;

namespace vmk
{
struct SettingKey;
}

namespace vmk::panel
{

// The settings dialog. Every control that has a row in the settings table
// (SettingKey's dialog columns) writes its setting at each change, so the
// variables change while the dialog is open; Aceptar (Label32) checks the two
// stage folders, sends the engine options and saves, Cancelar (Label33) reads the
// file back. Five labels choose the page; "Extras" (Label11) shows none, so Frame2
// cannot be reached.
class FrmConf : public QWidget
{
    Q_OBJECT
public:
    explicit FrmConf(QWidget* parent = nullptr);

    // A control by its name ("Check1", "Text6", "Frame4", "Label32", ...).
    template<typename T> T* control(const char* name) const { return findChild<T*>(QLatin1String(name)); }
    // The frame in view; nullptr when none is.
    QFrame* visibleFrame() const;

    // Event procedures, public so that tests can reach them.
    void Label6_Click(); // Analizador: Frame1
    void Label7_Click(); // Adm. Archivos: Frame3
    void Label8_Click(); // Respaldos: Frame5
    void Label9_Click(); // Cuarentena: Frame4
    void Label11_Click(); // Extras: nothing
    void Label32_Click(); // Aceptar
    void Label33_Click(); // Cancelar
    // A "..." button: Form6, and its choice into the box beside it.
    void PickFolder(const char* textBox);

signals:
    // The dialog is gone: the panel comes back.
    void unloaded();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    void showFrame(const char* frame);
    QFrame* addFrame(const char* name);
    void bind(const SettingKey& key);
    void fill(const SettingKey& key);
    void addMaskSwitch(QGridLayout* grid, int row, int column, const char* check, QLineEdit* box);
    bool folderAccepted(const char* textBox, const QString& refusal);

    QHash<QString, QFrame*> m_frames;
    bool m_daysValid = true; // Combo4 holds a number
    bool m_passTyped = false; // Text8 was changed after the load
    bool m_unloaded = false;
};

} // namespace vmk::panel
