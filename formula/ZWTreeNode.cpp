#include "formula/ZWTreeNode.h"

ZWTreeNode::ZWTreeNode() = default;

ZWTreeNode::ZWTreeNode(ZWTreeNode* parent, const ZWBasicString& value) : m_value(value), m_parent(parent)
{}

ZWTreeNode::ZWTreeNode(const ZWTreeNode& other) : m_value(other.m_value), m_parent(other.m_parent)
{
    CopyChildrenOf(other);
}

ZWTreeNode& ZWTreeNode::operator=(const ZWTreeNode& other)
{
    if (this == &other)
        return *this;
    // Copy first: `other` may be one of this node's descendants.
    ZWTreeNode copy(other);
    Clear();
    m_value = copy.m_value;
    m_parent = copy.m_parent;
    m_children.swap(copy.m_children);
    for (ZWTreeNode* child : m_children)
        child->m_parent = this;
    return *this;
}

ZWTreeNode::~ZWTreeNode()
{
    Clear();
}

void ZWTreeNode::CopyChildrenOf(const ZWTreeNode& other)
{
    m_children.reserve(other.m_children.size());
    for (const ZWTreeNode* child : other.m_children) {
        auto* copy = new ZWTreeNode(*child);
        copy->m_parent = this;
        m_children.push_back(copy);
    }
}

ZWTreeNode* ZWTreeNode::GetChild(int index) const
{
    if (index < 0 || index >= GetNumberOfChilds())
        return nullptr;
    return m_children[size_t(index)];
}

void ZWTreeNode::AddChild(ZWTreeNode* child)
{
    if (child)
        m_children.push_back(child);
}

bool ZWTreeNode::IsInBranch(const ZWBasicString& name) const
{
    for (const ZWTreeNode* node = this; node; node = node->m_parent)
        if (node->m_value == name)
            return true;
    return false;
}

void ZWTreeNode::Clear()
{
    for (ZWTreeNode* child : m_children)
        delete child;
    m_children.clear();
}
