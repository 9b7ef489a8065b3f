#include <oz/DisplayTree.hpp>

namespace oz::DisplayTree {

namespace {

// Visits each member of a display with its name in the map.
template <typename Record, typename Visit>
void eachMember(Record &display, const Visit &visit)
{
    visit(QStringLiteral("name"), display.name);
    visit(QStringLiteral("type"), display.kind);
    visit(QStringLiteral("attached"), display.attached);
    visit(QStringLiteral("detachable"), display.detachable);
    visit(QStringLiteral("width"), display.size.rwidth());
    visit(QStringLiteral("height"), display.size.rheight());
    visit(QStringLiteral("mm_width"), display.physicalSize.rwidth());
    visit(QStringLiteral("mm_height"), display.physicalSize.rheight());
    visit(QStringLiteral("rotation"), display.rotation);
    visit(QStringLiteral("technology"), display.technology);
}

} // namespace

QVariantMap toAttributes(const Displays &displays)
{
    QVariantMap attributes;
    for (auto [id, display] : displays) {
        QVariantMap members;
        eachMember(display, [&](const QString &name, const auto &value) { members.insert(name, value); });
        attributes.insert(QString::number(id), members);
    }
    return attributes;
}

Displays fromAttributes(const QVariantMap &attributes)
{
    Displays displays;
    for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute) {
        bool ok = false;
        const int id = attribute.key().toInt(&ok);
        if (!ok || id < 0 || attribute.value().typeId() != QMetaType::QVariantMap)
            continue;
        const QVariantMap members = attribute.value().toMap();
        eachMember(displays[id], [&]<typename Value>(const QString &name, Value &value) {
            value = members.value(name).value<Value>();
        });
    }
    return displays;
}

} // namespace oz::DisplayTree
