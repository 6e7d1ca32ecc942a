// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// KeyedList: the table type. Rows of (Key, Text) kept in ascending order of
// Text under the program's collation (see collation.h); positions are 1-based.
// Every operation is logarithmic in the number of rows (or better), so tables of
// millions of rows stay responsive.
#include <QString>
#include <QStringView>
#include <functional>
#include <memory>
#include <stdexcept>

namespace qor {

// A failure of a table operation (missing key, duplicate key, position out of
// range). Callers avoid these; they are programming errors, not user errors.
class KeyedListError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class KeyedList {
public:
    KeyedList();
    ~KeyedList();
    KeyedList(KeyedList &&) noexcept;
    KeyedList &operator=(KeyedList &&) noexcept;
    KeyedList(const KeyedList &) = delete;
    KeyedList &operator=(const KeyedList &) = delete;
    void swap(KeyedList &other) noexcept;

    int count() const;
    void clear();

    // Inserts at the sorted place (after rows that compare equal) and returns
    // the new row's 1-based position. Throws on an empty or existing key.
    int add(const QString &key, const QString &text);
    // Bulk loading: appends at the end without ordering; call resort() before
    // relying on the order. Throws on an empty or existing key.
    void append(const QString &key, const QString &text);
    // Takes the strings only when the row is added: after a throw they are
    // still the caller's.
    void append(QString &&key, QString &&text);
    // Room for n rows in all, so a bulk load of a known size grows nothing
    // row by row. A hint only: the table stays as it is.
    void reserve(int n);
    // A hint ahead of append/contains/textOf with this key: starts fetching
    // the memory the look-up will need. Changes nothing.
    void prefetch(QStringView key) const;

    bool contains(QStringView key) const;
    int indexOf(QStringView key) const;  // 1-based position, 0 when absent

    QString key(int index) const;   // throws when out of 1..count()
    QString text(int index) const;  // throws when out of 1..count()
    // Views stay valid until the next change to this list.
    QStringView keyView(int index) const;
    QStringView textView(int index) const;
    QString textOf(QStringView key) const;  // throws when the key is absent

    // Changing a text leaves the row where it is.
    void setText(int index, const QString &text);
    void setText(int index, QString &&text);
    void setTextOf(QStringView key, const QString &text);
    void remove(QStringView key);  // throws when the key is absent

    // Stable re-sort of all rows by Text.
    void resort();
    bool isSorted() const;

    // Fast walk in table order; stop early by returning false.
    void forEach(const std::function<bool(QStringView key, QStringView text)> &fn) const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

}  // namespace qor
