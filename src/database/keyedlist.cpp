// Interim implementation (linear time); replaced by the logarithmic one.
#include "keyedlist.h"
#include "collation.h"

#include <QHash>
#include <algorithm>
#include <vector>

namespace qor {

struct KeyedList::Impl {
    struct Row { QString key, text; };
    std::vector<Row> rows;
    int find(QStringView key) const {
        for (size_t i = 0; i < rows.size(); ++i) if (rows[i].key == key) return int(i);
        return -1;
    }
};

KeyedList::KeyedList() : d(new Impl) {}
KeyedList::~KeyedList() = default;
KeyedList::KeyedList(KeyedList &&o) noexcept : d(std::move(o.d)) { o.d.reset(new Impl); }
KeyedList &KeyedList::operator=(KeyedList &&o) noexcept { d.swap(o.d); return *this; }
void KeyedList::swap(KeyedList &o) noexcept { d.swap(o.d); }
int KeyedList::count() const { return int(d->rows.size()); }
void KeyedList::clear() { d->rows.clear(); }
int KeyedList::add(const QString &key, const QString &text) {
    if (key.isEmpty() || d->find(key) >= 0) throw KeyedListError("duplicate or empty key");
    auto it = std::upper_bound(d->rows.begin(), d->rows.end(), text,
        [](const QString &t, const Impl::Row &r) { return compareRowText(t, r.text) < 0; });
    it = d->rows.insert(it, {key, text});
    return int(it - d->rows.begin()) + 1;
}
void KeyedList::append(const QString &key, const QString &text) {
    if (key.isEmpty() || d->find(key) >= 0) throw KeyedListError("duplicate or empty key");
    d->rows.push_back({key, text});
}
bool KeyedList::contains(QStringView key) const { return d->find(key) >= 0; }
int KeyedList::indexOf(QStringView key) const { return d->find(key) + 1; }
static void check(int i, int n) { if (i < 1 || i > n) throw KeyedListError("position out of range"); }
QString KeyedList::key(int i) const { check(i, count()); return d->rows[i - 1].key; }
QString KeyedList::text(int i) const { check(i, count()); return d->rows[i - 1].text; }
QStringView KeyedList::keyView(int i) const { check(i, count()); return d->rows[i - 1].key; }
QStringView KeyedList::textView(int i) const { check(i, count()); return d->rows[i - 1].text; }
QString KeyedList::textOf(QStringView key) const {
    int i = d->find(key); if (i < 0) throw KeyedListError("no such key"); return d->rows[i].text;
}
void KeyedList::setText(int i, const QString &t) { check(i, count()); d->rows[i - 1].text = t; }
void KeyedList::setTextOf(QStringView key, const QString &t) {
    int i = d->find(key); if (i < 0) throw KeyedListError("no such key"); d->rows[i].text = t;
}
void KeyedList::remove(QStringView key) {
    int i = d->find(key); if (i < 0) throw KeyedListError("no such key"); d->rows.erase(d->rows.begin() + i);
}
void KeyedList::resort() {
    std::stable_sort(d->rows.begin(), d->rows.end(),
        [](const Impl::Row &a, const Impl::Row &b) { return compareRowText(a.text, b.text) < 0; });
}
bool KeyedList::isSorted() const {
    for (size_t i = 1; i < d->rows.size(); ++i)
        if (compareRowText(d->rows[i - 1].text, d->rows[i].text) > 0) return false;
    return true;
}
void KeyedList::forEach(const std::function<bool(QStringView, QStringView)> &fn) const {
    for (const auto &r : d->rows) if (!fn(r.key, r.text)) return;
}

}  // namespace qor
