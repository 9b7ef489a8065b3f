#pragma once

/*
 * How the classes announce what has changed: each states its fields and signals as a table, in the order of
 * emission.
 */

#include <QPointer>

#include <cstddef>
#include <cstdint>

namespace oz::device {

template <typename... Changes>
struct ChangeTable;

/*! The values of an object as its getters give them, and which signals about them are still to come. */
template <typename Record>
class Announced
{
public:
    [[nodiscard]] const Record &operator*() const { return m_values; }
    [[nodiscard]] const Record *operator->() const { return &m_values; }

    /*! Sets the values that the object is born with, which is no change. */
    void begin(const Record &values) { m_values = values; }

private:
    template <typename... Changes>
    friend struct ChangeTable;

    Record m_values{};
    std::uint32_t m_untold = 0; // a bit for each signal of the table
};

/*! Fields of a record: those that one row is about, or the parameters of its signals. */
template <auto... Members>
struct Fields
{
};

/*! A row of a class's table: the fields, and the signals that announce them, the typed one first. */
template <typename FieldList, auto... Signals>
struct Change;

template <auto... Members, auto... Signals>
struct Change<Fields<Members...>, Signals...>
{
    static constexpr std::size_t SignalCount = sizeof...(Signals);

    template <typename Record>
    static bool differs(const Record &before, const Record &after)
    {
        return (... || (before.*Members != after.*Members));
    }

    /*! True if the record, as it is by then, still has something to announce. */
    template <typename Record>
    static bool applies(const Record & /*record*/)
    {
        return true;
    }

    /*! Emits the signal number \a index with what \a record holds, which may go together with \a q. */
    template <typename Public, typename Record>
    static void emitSignal(Public *q, const Record &record, std::size_t index)
    {
        std::size_t next = 0;
        (..., (next++ == index ? (q->*Signals)(record.*Members...) : void()));
    }

    /*! Emits all of them for a \a record of its own, as far as \a q is there. */
    template <typename Public, typename Record>
    static void emitOn(const QPointer<Public> &q, const Record &record)
    {
        for (std::size_t i = 0; q && i < SignalCount; ++i)
            emitSignal(q.data(), record, i);
    }
};

/*!
 * A row whose signals tell other fields than it is about, and only where \a Condition holds of the record by
 * the time of each.
 */
template <typename Watched, auto Condition, typename Told, auto... Signals>
struct ConditionalChange : Change<Told, Signals...>
{
    template <typename Record>
    static bool differs(const Record &before, const Record &after)
    {
        return Change<Watched>::differs(before, after);
    }
    template <typename Record>
    static bool applies(const Record &record)
    {
        return Condition(record);
    }
};

/*! The changes that a class announces, in the order of emission. */
template <typename... Changes>
struct ChangeTable
{
    /*!
     * Compares \a fresh with \a values, stores the whole of it, and then emits what changed on \a q, so that
     * slots see the new values through the getters. A slot may destroy \a q, which ends the announcements. A
     * slot that has something newer stored meanwhile leaves its announcement nothing to tell: the newer one
     * tells what was still to come too, with the newer values.
     */
    template <typename Public, typename Record>
    static void storeAndEmit(Public *q, Announced<Record> *values, const Record &fresh)
    {
        store(values, fresh);
        emitUntold(q, values);
    }

    /*! The first half of storeAndEmit(). */
    template <typename Record>
    static void store(Announced<Record> *values, const Record &fresh)
    {
        static_assert((... + Changes::SignalCount) <= 32);
        std::size_t first = 0;
        (..., (note<Changes>(values, fresh, first), first += Changes::SignalCount));
        values->m_values = fresh;
    }

    /*! The second half of it. */
    template <typename Public, typename Record>
    static void emitUntold(Public *q, Announced<Record> *values)
    {
        const QPointer<Public> alive(q);
        std::size_t first = 0;
        (..., (emitRow<Changes>(alive, values, first), first += Changes::SignalCount));
    }

private:
    template <typename Row, typename Record>
    static void note(Announced<Record> *values, const Record &fresh, std::size_t first)
    {
        if (Row::differs(values->m_values, fresh))
            values->m_untold |= ((std::uint32_t(1) << Row::SignalCount) - 1) << first;
    }

    template <typename Row, typename Public, typename Record>
    static void emitRow(const QPointer<Public> &q, Announced<Record> *values, std::size_t first)
    {
        for (std::size_t i = 0; q && i < Row::SignalCount; ++i) {
            const std::uint32_t bit = std::uint32_t(1) << (first + i);
            if (!(values->m_untold & bit))
                continue;
            values->m_untold &= ~bit;
            if (Row::applies(values->m_values))
                Row::emitSignal(q.data(), values->m_values, i);
        }
    }
};

} // namespace oz::device
