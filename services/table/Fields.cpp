#include "table/Fields.hpp"

#include <algorithm>

namespace oz::services {

namespace {

QVariant memberOf(const QVariant &value, const QString &key)
{
    return value.typeId() == QMetaType::QVariantList ? value.toList().value(key.toInt())
                                                     : value.toMap().value(key);
}

} // namespace

QString Field::fullName(const QString &facility) const
{
    return name.contains(u'.') && !name.startsWith(u'*') ? name : QString(facility + u'.' + name);
}

QVariant Field::in(const QVariantMap &attributes, const QString &instance) const
{
    QVariant value = attributes;
    for (const QString &key : place.split(u'/', Qt::SkipEmptyParts))
        value = memberOf(value, key == u"*" ? instance : key);
    return read(value);
}

PlaceTree::PlaceTree(const QStringList &places)
{
    for (int place = 0; place < int(places.size()); ++place) {
        Node *node = &m_root;
        for (const QString &key : places[place].split(u'/', Qt::SkipEmptyParts)) {
            const auto known = std::find_if(node->children.begin(), node->children.end(),
                [&](const Node &child) { return child.key == key; });
            node = known == node->children.end() ? &node->children.emplace_back(Node{key}) : &*known;
        }
        node->place = place;
    }
}

QVariantMap PlaceTree::attributes(const std::function<QVariant(int place)> &value) const
{
    return valueOf(m_root, value).toMap();
}

// A map or list stands there where one of its members does, or where it has a place of its own.
QVariant PlaceTree::valueOf(const Node &node, const std::function<QVariant(int place)> &value)
{
    const QVariant own = node.place < 0 ? QVariant() : value(node.place);
    if (node.children.empty())
        return own;
    bool isList = false;
    (void)node.children.front().key.toInt(&isList);
    QVariantMap map = own.toMap();
    QVariantList list;
    for (const Node &child : node.children) {
        const QVariant member = valueOf(child, value);
        if (!member.isValid())
            continue;
        if (isList)
            list.append(member);
        else
            map.insert(child.key, member);
    }
    if (isList)
        return list.isEmpty() ? own : QVariant(list);
    return map.isEmpty() ? own : QVariant(map);
}

} // namespace oz::services
