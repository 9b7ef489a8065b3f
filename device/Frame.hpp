#pragma once

/*
 * What the private halves of the facility classes share. Each class states its paths, texts, fields and
 * signals as tables; how an object is opened, read, compared, announced and asked stands here, once.
 */

#include <oz/PpsOpenMode.hpp>

#include <QLoggingCategory>
#include <QPointer>
#include <QVariantMap>

#include <array>
#include <optional>

namespace oz {
class PpsObject;
}

namespace oz::device {

/*! The category of every warning of the library, "oz.device". */
Q_DECLARE_LOGGING_CATEGORY(logDevice)

/*! A fixed warning about a PPS object, and what of the object's error follows it. */
struct LogText
{
    enum Detail {
        Nothing,
        ErrorCode, //!< the errno, then "."
        ErrorString,
        ErrorStringInBrackets, //!< the error string, then ")"; the text ends with the opening one
        ErrorStringJoined, //!< the same, all of it one string
    };

    const char *text;
    Detail detail = Nothing;

    void warn(const oz::PpsObject &pps) const;
};

/*! The warnings of one reading. */
struct ReadTexts
{
    LogText readFailed;
    LogText decodeFailed;
};

/*! Opens \a pps; on failure warns and returns false. */
bool openOrLog(oz::PpsObject *pps, oz::PpsOpenMode::Type mode, const LogText &openFailed);

/*! The next message of \a pps, decoded; nothing, after a warning, where reading or decoding fails. */
[[nodiscard]] std::optional<QVariantMap> readOrLog(oz::PpsObject *pps, const ReadTexts &texts);

/*! The attributes of the object \a key ("@status") in a decoded message; none where the key is missing. */
[[nodiscard]] QVariantMap attributesOf(const QVariantMap &message, const QString &key);

/*! The attributes of a decoded message's only object, whatever its name. */
[[nodiscard]] QVariantMap attributesOf(const QVariantMap &message);

/*!
 * The attributes of the only object in the next message of \a pps. None where \a pps is null or not open,
 * and, after a warning, where reading or decoding fails: so a class that takes none for its defaults falls
 * back to them.
 */
[[nodiscard]] QVariantMap attributesOrLog(oz::PpsObject *pps, const ReadTexts &texts);

/*! The member \a member of the attribute \a attribute, which is a map; invalid where either is missing. */
[[nodiscard]] QVariant memberOf(
    const QVariantMap &attributes, const QString &attribute, const QString &member);

/*! A text that a service publishes, and what it stands for. */
template <typename Value>
struct NamedValue
{
    const char *name;
    Value value;
};

/*! What \a name stands for, compared exactly; nothing where the table does not have it. */
template <typename Value, std::size_t Size>
[[nodiscard]] std::optional<Value> valueNamed(const NamedValue<Value> (&table)[Size], const QString &name)
{
    for (const NamedValue<Value> &entry : table) {
        if (name == QLatin1String(entry.name))
            return entry.value;
    }
    return std::nullopt;
}

/*! One request to a control object. */
struct ControlRequest
{
    QString path; //!< with "?wait"
    QVariantMap attributes;
    bool setBlocking = false; //!< whether setBlocking(true) is called before the object is opened
};

/*! The warnings of one exchange; a failed open warns only where a text is given. */
struct ControlTexts
{
    std::optional<LogText> openFailed;
    LogText encodeFailed;
    LogText writeFailed;
    ReadTexts answer;
};

/*! How an exchange ended. */
struct ControlAnswer
{
    enum Outcome { Answered, NotOpened, Failed };

    Outcome outcome = Failed;
    int error = 0; //!< the errno of an object that did not open
    QVariantMap message; //!< the decoded answer
};

/*! Sends \a request to a control object of its own, waits for the answer and closes the object on every path.
 */
[[nodiscard]] ControlAnswer exchange(const ControlRequest &request, const ControlTexts &texts);

/*! The fields of a record that one announcement is about, in the order of the signal's parameters. */
template <auto... Members>
struct Fields
{
};

/*! One row of a class's change table: the fields, and the signals that announce them, the typed one first. */
template <typename FieldList, auto... Signals>
struct Change;

template <auto... Members, auto... Signals>
struct Change<Fields<Members...>, Signals...>
{
    template <typename Record>
    static bool differs(const Record &before, const Record &after)
    {
        return (... || (before.*Members != after.*Members));
    }

    /*! Emits with what \a record holds by then; it may go together with \a q. */
    template <typename Public, typename Record>
    static void emitOn(const QPointer<Public> &q, const Record &record)
    {
        (..., (q ? (q.data()->*Signals)(record.*Members...) : void()));
    }
};

/*! The changes that a class announces, in the order of emission. */
template <typename... Changes>
struct ChangeTable
{
    /*!
     * Compares \a fresh with \a cache, stores the whole of it, and then emits what changed on \a q. A slot
     * sees the new record through the getters; it may destroy \a q, which ends the announcements. Where a
     * slot has a newer record stored meanwhile, the signals that are left tell that one's values.
     */
    template <typename Public, typename Record>
    static void storeAndEmit(Public *q, Record *cache, const Record &fresh)
    {
        const std::array changed{Changes::differs(*cache, fresh)...};
        *cache = fresh;
        const QPointer<Public> alive(q);
        auto next = changed.begin();
        (..., (*next++ ? Changes::emitOn(alive, *cache) : void()));
    }
};

} // namespace oz::device
