#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QString>

namespace vmk
{

// The event list `ListView`: one row per file handed to the engine, with the
// file's full path ("Archivo") and its outcome ("Estatus"). A scan lists
// hundreds of thousands of files, so rows are appended to a buffer and reach the
// views in one insert per flush, never one insert per file.
class EventListModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { ColumnFile = 0, ColumnStatus = 1 };

    explicit EventListModel(QObject* parent = nullptr);

    // Appends a row with the full path and no status yet; returns its index. The
    // row counts in rowCountWithPending() at once and in rowCount() after flush().
    qsizetype appendRow(const QString& path);
    void setStatus(qsizetype row, const QString& status);
    // One beginInsertRows for every row appended since the last flush.
    void flush();
    // Empties the list, buffered rows included.
    void clear();

    qsizetype rowCountWithPending() const { return m_rows.size(); }
    QString path(qsizetype row) const { return m_rows.value(row).Path; }
    QString status(qsizetype row) const { return m_rows.value(row).Status; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Row {
        QString Path;
        QString Status;
    };
    QList<Row> m_rows; // shown rows first, then the buffered ones
    qsizetype m_shown = 0; // how many rows the views know of
};

} // namespace vmk
