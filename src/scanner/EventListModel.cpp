#include "scanner/EventListModel.h"

#include "foundation/Translate.h"

namespace vmk
{

EventListModel::EventListModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

qsizetype EventListModel::appendRow(const QString& path)
{
    m_rows.append(Row { path, QString() });
    return m_rows.size() - 1;
}

void EventListModel::setStatus(qsizetype row, const QString& status)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row].Status = status;
    if (row < m_shown) {
        const QModelIndex cell = index(static_cast<int>(row), ColumnStatus);
        emit dataChanged(cell, cell);
    }
}

void EventListModel::flush()
{
    if (m_shown == m_rows.size())
        return;
    beginInsertRows(QModelIndex(), static_cast<int>(m_shown), static_cast<int>(m_rows.size() - 1));
    m_shown = m_rows.size();
    endInsertRows();
}

void EventListModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_shown = 0;
    endResetModel();
}

int EventListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown);
}

int EventListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 2;
}

QVariant EventListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_shown || role != Qt::DisplayRole)
        return {};
    const Row& r = m_rows.at(index.row());
    return index.column() == ColumnFile ? r.Path : r.Status;
}

QVariant EventListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case ColumnFile:
        return Translate(QStringLiteral("Archivo"));
    case ColumnStatus:
        return Translate(QStringLiteral("Estatus"));
    default:
        return {};
    }
}

} // namespace vmk
