#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QStringList>

namespace vmk
{

// The threat list `ListViewInf`: one row per alert, with a tick box. Columns:
// "Archivo" (the name, from TextScan), "Carpeta" (the folder, from textfolder,
// ending in "\"), "Amenaza" (ThreatKind:ThreatName) and "Desinfectable/Estatus"
// ("Si" or "No" from the scan, then the status an action wrote). The full path of
// a threat is the folder followed by the name. Rows are buffered and reach the
// views in one insert per flush, like the event list.
class ThreatListModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { ColumnFile = 0, ColumnFolder = 1, ColumnThreat = 2, ColumnStatus = 3 };

    explicit ThreatListModel(QObject* parent = nullptr);

    qsizetype appendRow(const QString& name, const QString& folder, const QString& threat, bool repairable);
    void flush();
    void clear();

    qsizetype rowCountWithPending() const { return m_rows.size(); }
    QString name(qsizetype row) const { return m_rows.value(row).Name; }
    QString folder(qsizetype row) const { return m_rows.value(row).Folder; }
    QString threat(qsizetype row) const { return m_rows.value(row).Threat; }
    QString status(qsizetype row) const { return m_rows.value(row).Status; }
    QString fullPath(qsizetype row) const { return folder(row) + name(row); }
    // The row texts of every row, buffered ones too (IsAlreadyListed reads them).
    QStringList rowTexts() const;

    bool isTicked(qsizetype row) const { return m_rows.value(row).Ticked; }
    // The tick rule: only a row whose status is still the scan's "Si" or "No" can
    // be ticked; any other row has been handled and its tick is taken away at once.
    // Unticking always works. Returns whether the row is ticked afterwards.
    bool setTicked(qsizetype row, bool ticked);
    // Writes an action's status into the row.
    void setStatus(qsizetype row, const QString& status);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Row {
        QString Name;
        QString Folder;
        QString Threat;
        QString Status;
        bool Ticked = false;
    };
    void changed(qsizetype row, int column);

    QList<Row> m_rows;
    qsizetype m_shown = 0;
};

} // namespace vmk
