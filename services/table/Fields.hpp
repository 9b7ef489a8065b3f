#pragma once

#include "table/ValueType.hpp"
#include "table/WordList.hpp"

#include <QVariantMap>

#include <functional>
#include <initializer_list>
#include <optional>
#include <sys/types.h>
#include <type_traits>
#include <vector>

namespace oz::services {

/*! A value that a facility says: where it stands in the tree, and what it means there. */
struct Field
{
    /*! As conditions and recordings call it behind the name of its facility; one with a dot has the name of
     * another, and a star stands for one of several. */
    QString name;
    QString
        place; //!< the attribute, and the keys and indices in it: "BatteryInfo/BatteryStatus/0/CycleCount"
    ValueType type;
    QString help;
    QString path; //!< of the object
    /*! The value of what stands at the place. */
    std::function<QVariant(const QVariant &published)> read;
    /*! The published text for each of its words, or for true and false; one more is for what is not known. */
    QStringList published = {};

    /*! Its name with that of the facility which it is about, where \a facility says it. */
    [[nodiscard]] QString fullName(const QString &facility) const;
    /*! The value in the attributes of the object; a "*" in the place stands for the \a instance. */
    [[nodiscard]] QVariant in(const QVariantMap &attributes, const QString &instance = {}) const;
};

/*! How a value of a \a Record is published and read back. */
template <typename Record>
struct Column
{
    ValueType type;
    /*! Gives the published value; nothing is published where it is invalid. */
    std::function<QVariant(const Record &record)> write;
    std::function<QVariant(const QVariant &published)> read;
    QStringList published = {}; //!< as in a Field

    /*! No condition sees it and no log shows it: it tells who somebody is. */
    [[nodiscard]] Column asPrivate() const
    {
        Column column = *this;
        column.type.isPrivate = true;
        return column;
    }
};

/*!
 * The columns of a \a Record. Each takes what gives the value, a member or a function, which is a value or an
 * optional one.
 */
template <typename Record>
class Columns
{
    template <typename Value>
    static std::optional<Value> optionalOf(const Value &value)
    {
        return value;
    }
    template <typename Value>
    static std::optional<Value> optionalOf(const std::optional<Value> &value)
    {
        return value;
    }
    template <typename Get>
    using ValueOf =
        typename decltype(optionalOf(std::invoke(std::declval<Get>(), std::declval<Record>())))::value_type;

public:
    template <typename Get>
    static Column<Record> truth(Get get)
    {
        return {{ValueType::Truth}, writer(get), asIs};
    }
    /*! Published as one of two texts. */
    template <typename Get>
    static Column<Record> truth(Get get, const char *yes, const char *no)
    {
        return words(get, WordList<bool>{{true, yes, "true"}, {false, no, "false"}}, {ValueType::Truth});
    }

    struct NumberForm
    {
        std::optional<int> unknown = {}; //!< what stands for a number that is not known
        double times = 1; //!< how many times as large it is published
    };
    template <typename Get>
    static Column<Record> number(Get get, const char *unit = "", NumberForm form = {})
    {
        const auto write = [get, form](const Record &record) {
            const auto value = optionalOf(std::invoke(get, record));
            if (!value)
                return form.unknown ? QVariant(*form.unknown) : QVariant();
            return form.times == 1 ? QVariant(*value) : QVariant(qRound(*value * form.times));
        };
        const auto read = [form](const QVariant &published) {
            const bool isKnown = published.isValid() && (!form.unknown || published != *form.unknown);
            return isKnown ? QVariant(published.toDouble() / form.times) : QVariant();
        };
        return {{ValueType::Number, QString::fromUtf8(unit)}, write, read};
    }

    template <typename Get>
    static Column<Record> text(Get get)
    {
        return {{ValueType::Text}, writer(get), asIs};
    }

    /*! Published as the word of an enumerator; \a unknown is the text, if any, for an unknown one. */
    template <typename Get>
    static Column<Record> words(Get get, const WordList<ValueOf<Get>> &words, const char *unknown = "")
    {
        return Columns::words(get, words, {ValueType::Word, {}, wordsIn(words)}, unknown);
    }

    /*! A list of an enumeration's values. */
    template <typename Get>
    static Column<Record> list(Get get, const WordList<typename ValueOf<Get>::value_type> &words)
    {
        const auto write = [get, words](const Record &record) {
            const auto values = optionalOf(std::invoke(get, record));
            if (!values)
                return QVariant();
            QStringList published;
            for (const auto &value : *values) {
                if (const QString text = publishedFor(words, value); !text.isNull())
                    published.append(text);
            }
            return QVariant(published);
        };
        return {{ValueType::List, {}, wordsIn(words)}, write, asIs, publishedIn(words)};
    }

    /*! Written and read by functions of its own. */
    static Column<Record> custom(const ValueType &type, std::function<QVariant(const Record &)> write,
        std::function<QVariant(const QVariant &)> read = asIs)
    {
        return {type, std::move(write), std::move(read)};
    }
    /*! A constant that is always published, and is no value. */
    static Column<Record> constant(const QVariant &value)
    {
        return {{}, [value](const Record &) { return value; }, {}};
    }

private:
    template <typename Get>
    static std::function<QVariant(const Record &)> writer(Get get)
    {
        return [get](const Record &record) {
            const auto value = optionalOf(std::invoke(get, record));
            return value ? QVariant::fromValue(*value) : QVariant();
        };
    }
    static QVariant asIs(const QVariant &published) { return published; }

    template <typename Get>
    static Column<Record> words(
        Get get, const WordList<ValueOf<Get>> &words, const ValueType &type, const char *unknown = "")
    {
        const QVariant unknownText = *unknown ? QVariant(QString::fromLatin1(unknown)) : QVariant();
        const auto write = [get, words, unknownText](const Record &record) {
            const QString text = publishedFor(words, optionalOf(std::invoke(get, record)));
            return text.isNull() ? unknownText : QVariant(text);
        };
        const auto read = [words, isTruth = type.kind == ValueType::Truth](const QVariant &published) {
            for (const auto &each : words) {
                if (published == QLatin1String(each.published))
                    return isTruth ? QVariant(bool(each.value)) : QVariant(QString::fromLatin1(each.word));
            }
            return QVariant();
        };
        QStringList published = publishedIn(words);
        if (*unknown)
            published.append(unknownText.toString());
        return {type, write, read, published};
    }
};

/*! Puts the values of an object's attributes at their places. */
class PlaceTree
{
public:
    explicit PlaceTree(const QStringList &places = {});

    /*! The attributes; \a value gives what stands at the place of that number, or nothing. */
    [[nodiscard]] QVariantMap attributes(const std::function<QVariant(int place)> &value) const;

private:
    struct Node
    {
        QString key;
        int place = -1;
        std::vector<Node> children = {};
    };
    [[nodiscard]] static QVariant valueOf(const Node &node, const std::function<QVariant(int place)> &value);

    Node m_root;
};

/*! The fields of one object of the tree: how a \a Record stands there, for those who write and who read it.
 */
template <typename Record>
class Fields
{
public:
    struct Row
    {
        QByteArray name;
        QByteArray place;
        Column<Record> column;
        QByteArray help;
    };

    /*! A record is the whole object, or one of several in it under their names. */
    enum Part { Whole, Each };

    Fields(const QString &path, std::initializer_list<Row> rows, mode_t mode = 0644, Part part = Whole)
        : m_path(path), m_mode(mode)
    {
        QStringList places;
        const QLatin1String place(part == Each ? "*/" : "");
        const QLatin1String name(part == Each ? "*." : "");
        for (const Row &row : rows) {
            if (row.column.write) {
                places.append(QLatin1String(row.place));
                m_writers.push_back(row.column.write);
            }
            if (!row.name.isEmpty()) {
                m_fields.push_back(
                    {name + QLatin1String(row.name), place + QLatin1String(row.place), row.column.type,
                        QString::fromUtf8(row.help), path, row.column.read, row.column.published});
            }
        }
        m_places = PlaceTree(places);
    }

    [[nodiscard]] const QString &path() const { return m_path; }
    [[nodiscard]] mode_t mode() const { return m_mode; }
    [[nodiscard]] const std::vector<Field> &fields() const { return m_fields; }
    [[nodiscard]] QVariantMap attributes(const Record &record) const
    {
        return m_places.attributes([&](int place) { return m_writers[std::size_t(place)](record); });
    }

private:
    QString m_path;
    mode_t m_mode;
    PlaceTree m_places;
    std::vector<std::function<QVariant(const Record &)>> m_writers;
    std::vector<Field> m_fields; // those that have a name
};

} // namespace oz::services
