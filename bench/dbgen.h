// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// A realistic database for the benchmarks, made through the engine: customers,
// products, monthly bill periods and invoice records from a fixed seed, so the
// same parameters always give the same file.
#include <QString>
#include <QtGlobal>
#include <array>
#include <random>

namespace qor {
class Database;
}

namespace qor::bench {

struct DbParams {
    QString label;  // file name without ".xml"
    int records = 0;
    int customers = 0;
    int products = 0;
    int periods = 0;
    quint64 seed = 0;
    QString locale;

    // One line naming everything that decides the generated content.
    QString stamp() const;
};

DbParams smallParams(const QString &locale);
DbParams largeParams(const QString &locale, int records = 1000000);

// Small deterministic generator. The raw output of mt19937_64 is fixed by the
// standard; the library's distributions are not, so ranges are cut by hand.
class Rng {
public:
    explicit Rng(quint64 seed) : m_gen(seed) {}
    int below(int n) { return int(m_gen() % quint64(n)); }
    bool chance(int percent) { return below(100) < percent; }
    template <size_t N>
    const char *pick(const std::array<const char *, N> &a)
    {
        return a[size_t(below(int(N)))];
    }

private:
    std::mt19937_64 m_gen;
};

// A "Last, First" name, for rows a benchmark adds on its own.
QString randomPersonName(Rng &rng);

// Replaces the content of db with the rows of p, in table order.
void generate(Database &db, const DbParams &p);

// The stamp file beside a generated database: path + ".stamp", holding the
// stamp line and the file's size.
bool stampMatches(const QString &path, const DbParams &p);
void writeStamp(const QString &path, const DbParams &p);

}  // namespace qor::bench
