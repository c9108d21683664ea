#include "scanner/ThreatListModel.h"

#include "foundation/Translate.h"

namespace vmk
{

ThreatListModel::ThreatListModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

qsizetype ThreatListModel::appendRow(const QString& name, const QString& folder, const QString& threat, bool repairable)
{
    m_rows.append(Row {
        name, folder, threat, repairable ? Translate(QStringLiteral("Si")) : Translate(QStringLiteral("No")), false });
    return m_rows.size() - 1;
}

void ThreatListModel::flush()
{
    if (m_shown == m_rows.size())
        return;
    beginInsertRows(QModelIndex(), static_cast<int>(m_shown), static_cast<int>(m_rows.size() - 1));
    m_shown = m_rows.size();
    endInsertRows();
}

void ThreatListModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_shown = 0;
    endResetModel();
}

QStringList ThreatListModel::rowTexts() const
{
    QStringList texts;
    texts.reserve(m_rows.size());
    for (const Row& r : m_rows)
        texts << r.Name;
    return texts;
}

bool ThreatListModel::setTicked(qsizetype row, bool ticked)
{
    if (row < 0 || row >= m_rows.size())
        return false;
    Row& r = m_rows[row];
    const bool open = r.Status == Translate(QStringLiteral("No")) || r.Status == Translate(QStringLiteral("Si"));
    const bool now = ticked && open;
    if (r.Ticked != now) {
        r.Ticked = now;
        changed(row, ColumnFile);
    } else if (ticked && !open) {
        // The view already drew the tick the user clicked: have it taken away again.
        changed(row, ColumnFile);
    }
    return r.Ticked;
}

void ThreatListModel::setStatus(qsizetype row, const QString& status)
{
    if (row < 0 || row >= m_rows.size())
        return;
    m_rows[row].Status = status;
    changed(row, ColumnStatus);
}

void ThreatListModel::changed(qsizetype row, int column)
{
    if (row >= m_shown)
        return;
    const QModelIndex cell = index(static_cast<int>(row), column);
    emit dataChanged(cell, cell);
}

int ThreatListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown);
}

int ThreatListModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 4;
}

QVariant ThreatListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_shown)
        return {};
    const Row& r = m_rows.at(index.row());
    if (role == Qt::CheckStateRole && index.column() == ColumnFile)
        return r.Ticked ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case ColumnFile:
        return r.Name;
    case ColumnFolder:
        return r.Folder;
    case ColumnThreat:
        return r.Threat;
    case ColumnStatus:
        return r.Status;
    default:
        return {};
    }
}

bool ThreatListModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.row() >= m_shown || index.column() != ColumnFile || role != Qt::CheckStateRole)
        return false;
    const bool wanted = value.toInt() == Qt::Checked;
    return setTicked(index.row(), wanted) == wanted;
}

Qt::ItemFlags ThreatListModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags f = QAbstractTableModel::flags(index);
    if (index.isValid() && index.column() == ColumnFile)
        f |= Qt::ItemIsUserCheckable;
    return f;
}

QVariant ThreatListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case ColumnFile:
        return Translate(QStringLiteral("Archivo"));
    case ColumnFolder:
        return Translate(QStringLiteral("Carpeta"));
    case ColumnThreat:
        return Translate(QStringLiteral("Amenaza"));
    case ColumnStatus:
        return Translate(QStringLiteral("Desinfectable/Estatus"));
    default:
        return {};
    }
}

} // namespace vmk
