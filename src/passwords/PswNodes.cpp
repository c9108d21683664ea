#include "passwords/PswNodes.h"

namespace vmk::passwords
{

int PswNodes::Add(int parent, const QString& text)
{
    if (parent != 0 && !Exists(parent))
        return 0;
    Node n;
    n.Id = m_nextId++;
    n.ParentId = parent ? m_nodes[parent - 1].Id : 0;
    n.Text = text;
    m_nodes.append(n);
    return Count();
}

bool PswNodes::Remove(int index)
{
    if (!Exists(index))
        return false;
    // The node and, depth first, everything beneath it.
    QList<int> doomed { m_nodes[index - 1].Id };
    for (qsizetype d = 0; d < doomed.size(); ++d) {
        for (const Node& n : m_nodes) {
            if (n.ParentId == doomed[d])
                doomed << n.Id;
        }
    }
    m_nodes.removeIf([&doomed](const Node& n) { return doomed.contains(n.Id); });
    return true;
}

QString PswNodes::Text(int index) const
{
    return Exists(index) ? m_nodes[index - 1].Text : QString();
}

QString PswNodes::Tag(int index) const
{
    return Exists(index) ? m_nodes[index - 1].Tag : QString();
}

void PswNodes::SetTag(int index, const QString& tag)
{
    if (Exists(index))
        m_nodes[index - 1].Tag = tag;
}

int PswNodes::Parent(int index) const
{
    return Exists(index) ? indexOfId(m_nodes[index - 1].ParentId) : 0;
}

int PswNodes::indexOfId(int id) const
{
    for (int i = 0; i < Count(); ++i) {
        if (m_nodes[i].Id == id)
            return i + 1;
    }
    return 0;
}

} // namespace vmk::passwords
