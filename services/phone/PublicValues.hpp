#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace oz::services {

class Tree;

/*! A value of a facility that everybody can see in the tree, under the name that scenarios have for it. */
struct PublicValue
{
    enum Type { Number, Truth, Word, Text, List };
    using Read = std::function<QVariant(const QVariantMap &attributes, const QString &instance)>;

    QString name; //!< "battery.level"; in "display.*.attached", the star stands for an instance
    Type type;
    QString path; //!< of the object that tells it
    /*! The value in the attributes of that object; invalid where it is not known. */
    Read read;
    QString help; //!< what it is, and its unit
    QStringList words; //!< that a Word can be

    /*! The type, for a person. */
    [[nodiscard]] QString typeText() const;
};

/*! A value by its name: which one, and of which instance. */
struct PublicValueUse
{
    const PublicValue *value = nullptr;
    QString instance;

    /*! What it is now; invalid where that is not known. */
    [[nodiscard]] QVariant now(const Tree &tree) const;
};

/*! Every value that conditions and recordings know. */
[[nodiscard]] const std::vector<PublicValue> &publicValues();
/*! The value called \a name; throws Error with the nearest ones where there is none. */
[[nodiscard]] PublicValueUse publicValueNamed(const QString &name);

/*! Something that applications ask of a facility, under the name that scenarios have for it. */
struct PublicRequest
{
    struct Field
    {
        QString name;
        PublicValue::Type type;
        QStringList words = {};
    };
    /*! The fields of a message to the object at \a path; invalid where the message is another request. */
    using Read = std::function<QVariant(const QString &path, const QVariantMap &message)>;

    QString name; //!< "led.flash"
    QList<Field> fields;
    Read read;
    QString help;
};

[[nodiscard]] const std::vector<PublicRequest> &publicRequests();
/*! The request called \a name; throws Error where there is none. */
[[nodiscard]] const PublicRequest &publicRequestNamed(const QString &name);

/*! Both lists for tools: maps with "name", "type" or "fields", "help", and where there are any "words"; the
 * values with what they are "now". */
[[nodiscard]] QVariantMap describePublic(const Tree &tree);

} // namespace oz::services
