#pragma once

#include <QList>
#include <QString>

namespace vmk::passwords
{

// The node collection of the password tree (PswAddTree): every node in insertion
// order, numbered from 1. A new node always goes to the end, a removal closes the
// gap and takes the node's children with it, so a record's three nodes stand at
// i, i+1, i+2 and the record nodes at 1, 4, 7... The screen shows this collection
// as a tree; it is the only copy of the records in memory.
class PswNodes
{
public:
    int Count() const { return static_cast<int>(m_nodes.size()); }
    // Adds a node under `parent` (0: top level) and returns its index; a parent
    // index out of range gives 0 and adds nothing.
    int Add(int parent, const QString& text);
    // False, with nothing changed, for an index out of range.
    bool Remove(int index);
    void Clear() { m_nodes.clear(); }

    bool Exists(int index) const { return index >= 1 && index <= Count(); }
    // "" for an index out of range, as for a node without one.
    QString Text(int index) const;
    QString Tag(int index) const;
    void SetTag(int index, const QString& tag);
    // The index of the node's parent; 0 for a top-level node or an index out of range.
    int Parent(int index) const;

private:
    struct Node {
        int Id = 0; // stable while indexes shift
        int ParentId = 0;
        QString Text;
        QString Tag;
    };
    int indexOfId(int id) const;

    QList<Node> m_nodes;
    int m_nextId = 1;
};

} // namespace vmk::passwords
