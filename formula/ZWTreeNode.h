#pragma once

#include "host/core/ZWBasicString.h"

#include <vector>

// A node of the reference tree that the loop check grows: a formula name,
// the names it refers to as children (owned) and the node it was reached
// from (not owned; null for a root).
class ZWTreeNode
{
public:
    ZWTreeNode();
    ZWTreeNode(ZWTreeNode* parent, const ZWBasicString& value);
    // Deep copy: the children are copied with this node as their parent; the
    // parent pointer is shared.
    ZWTreeNode(const ZWTreeNode& other);
    ZWTreeNode& operator=(const ZWTreeNode& other);
    virtual ~ZWTreeNode();

    int GetNumberOfChilds() const { return int(m_children.size()); }
    // Null when `index` is outside the children.
    ZWTreeNode* GetChild(int index) const;
    const ZWBasicString& GetValue() const { return m_value; }
    ZWTreeNode* GetParent() const { return m_parent; }
    // Appends `child`; this node takes ownership.
    void AddChild(ZWTreeNode* child);
    // True when this node or one of its ancestors holds exactly `name`.
    bool IsInBranch(const ZWBasicString& name) const;

private:
    void Clear();
    void CopyChildrenOf(const ZWTreeNode& other);

    ZWBasicString m_value;
    std::vector<ZWTreeNode*> m_children;
    ZWTreeNode* m_parent = nullptr;
};
