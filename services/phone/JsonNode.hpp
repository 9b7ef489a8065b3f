#pragma once

#include "phone/JsonDocument.hpp"
#include "table/ValueType.hpp"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

namespace oz::services {

/*!
 * A value in a commented JSON file, which knows its line and its key, so that whatever is wrong with it can
 * be told exactly. Everything that reads throws Error, with text such as "phone.json:12: sdcard.mounted:
 * expected true or false, found 3". A value that is not there reads as the given default.
 */
class JsonNode
{
public:
    /*! Reads \a file; comments of both forms are allowed. */
    static JsonNode parseFile(const QString &file);
    /*! Reads \a text, calling it \a file in errors. */
    static JsonNode parse(const QByteArray &text, const QString &file);
    /*! A map without members. */
    static JsonNode emptyMap();

    /*! The member \a key of this map, an empty map where it is not there. */
    [[nodiscard]] JsonNode map(const QString &key) const;
    /*! The elements of the list \a key, none where it is not there. */
    [[nodiscard]] std::vector<JsonNode> list(const QString &key) const;
    /*! The elements of the list \a key, which are maps. */
    [[nodiscard]] std::vector<JsonNode> maps(const QString &key) const;
    /*! The members of this map in the order of the file. */
    [[nodiscard]] std::vector<std::pair<QString, JsonNode>> members() const;

    /*! The member \a key, which is there and is a \a type. */
    [[nodiscard]] QVariant value(const QString &key, const ValueType &type) const;
    [[nodiscard]] double number(const QString &key, double fallback, double least, double most) const;
    [[nodiscard]] int integer(const QString &key, int fallback, int least, int most) const;
    [[nodiscard]] QString text(const QString &key, const QString &fallback) const;
    /*! One of \a words. */
    [[nodiscard]] QString word(const QString &key, const QString &fallback, const QStringList &words) const;
    /*! A list of some of \a numbers. */
    [[nodiscard]] QList<int> integers(
        const QString &key, const QList<int> &fallback, const QList<int> &numbers) const;
    [[nodiscard]] bool contains(const QString &key) const;
    /*! Refuses members that are not in \a known: a misspelt key would otherwise do nothing, silently. */
    void allowOnly(const QStringList &known) const;

    /*! The elements of this value, which is a list. */
    [[nodiscard]] std::vector<JsonNode> elements() const;
    /*! This value, where it is text. */
    [[nodiscard]] std::optional<QString> asText() const;
    /*! This value where it is text, a number or true or false; throws for others. */
    [[nodiscard]] QVariant asScalar() const;
    /*! This value with all that is in it, as it stands there. */
    [[nodiscard]] QVariant content() const;
    [[nodiscard]] bool isMap() const;
    [[nodiscard]] bool isList() const;
    /*! The member \a key; throws where it is not there. */
    [[nodiscard]] JsonNode at(const QString &key) const;
    [[nodiscard]] QString file() const;
    [[nodiscard]] int line() const;

    /*! Tells this file's content from another's. */
    [[nodiscard]] QString fingerprint() const;

    /*! Throws \a reason about this value; \a key names a member of it. */
    [[noreturn]] void fail(const QString &reason, const QString &key = {}) const;

private:
    JsonNode(std::shared_ptr<const JsonDocument> document, const JsonValue *value, const QString &path)
        : m_document(std::move(document)), m_value(value), m_path(path)
    {
    }
    [[nodiscard]] std::optional<JsonNode> find(const QString &key) const;
    [[nodiscard]] QString description() const;
    [[nodiscard]] QVariant asVariant() const;
    [[nodiscard]] QVariant acceptedBy(const ValueType &type) const;
    void expectMap() const;
    [[noreturn]] void failHere(const QString &reason) const;

    std::shared_ptr<const JsonDocument> m_document;
    const JsonValue *m_value; // of the document
    QString m_path; // "sdcard.mounted", empty for the file's own value
};

} // namespace oz::services
