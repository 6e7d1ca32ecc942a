// SPDX-License-Identifier: GPL-3.0-or-later
// bench_keyedlist: timings of the table type on invoice-record rows (key about
// 20 characters, text about 60), and the memory a loaded table takes.
// Every case runs in a forked child so one case's peak memory is its own.
//
//   bench_keyedlist [rows]      (default 1000000)
#include "database/collation.h"
#include "database/keyedlist.h"
#include "database/rows.h"

#include <QString>
#include <QStringList>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

namespace {

// The machine may be shared with other work, so CPU time is shown beside the
// wall clock; CPU time is the figure to compare.
struct Stamp {
    std::chrono::steady_clock::time_point wall;
    double cpu;
};
double cpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}
struct Clock {
    static Stamp now() { return {std::chrono::steady_clock::now(), cpuMs()}; }
};
struct Span {
    double wall, cpu;
};
Span msSince(const Stamp &t0)
{
    return {std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0.wall).count(),
            cpuMs() - t0.cpu};
}

long peakRssKb()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}
long currentRssKb()
{
    long pages = 0, rss = 0;
    if (FILE *f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &rss) != 2) rss = 0;
        std::fclose(f);
    }
    return rss * (sysconf(_SC_PAGESIZE) / 1024);
}

const char *const FirstNames[] = {"James", "Mary", "John", "Patricia", "Robert", "Jennifer", "Michael", "Linda",
                                  "William", "Elizabeth", "David", "Barbara", "Richard", "Susan", "Joseph",
                                  "Jessica", "Thomas", "Sarah", "Charles", "Ren\u00e9e"};
const char *const LastNames[] = {"Smith", "Johnson", "Williams", "Brown", "Jones", "Garcia", "Miller", "Davis",
                                 "Rodriguez", "Martinez", "Hernandez", "Lopez", "Gonzalez", "Wilson", "Anderson",
                                 "Thomas", "Taylor", "Moore", "Jackson", "Martin", "Lee", "O'Brien", "de Souza",
                                 "\u00c9mile", "Young"};
const char *const Notes[] = {"", "", "", "Paid online", "Late fee waived", "Thank you for your business!"};

// Rows of a large file in table order: period by period, customers by name.
struct Rows {
    int customers = 10000;
    int periods = 0;
    QStringList custPart;  // "Name<FS>CID", in table order
    QStringList custCid;
    QStringList periodName;

    explicit Rows(int n)
    {
        periods = std::max(1, (n + customers - 1) / customers);
        std::mt19937_64 rng(20240601);
        std::vector<std::pair<QString, QString>> c;
        for (int i = 0; i < customers; ++i) {
            const QString cid = QString::number(i + 1);
            const QString name = QString::fromUtf8(LastNames[rng() % std::size(LastNames)]) + ", " + QString::fromUtf8(FirstNames[rng() % std::size(FirstNames)]);
            c.push_back({name + qor::FieldSep + cid, cid});
        }
        std::sort(c.begin(), c.end(), [](const auto &a, const auto &b) { return qor::rowTextLess(a.first, b.first); });
        for (auto &[part, cid] : c) {
            custPart << part;
            custCid << cid;
        }
        for (int p = 0; p < periods; ++p)
            periodName << QStringLiteral("%1/%2 Period %3").arg(2000 + p / 12).arg(p % 12 + 1, 2, 10, QChar('0')).arg(p + 1, 4, 10, QChar('0'));
    }
    QString key(int i) const
    {
        return periodName[i / customers] + qor::FieldSep + custCid[i % customers] + qor::FieldSep;
    }
    QString tail(int i) const
    {
        const QChar fs = qor::FieldSep;
        return QString::number((i * 37 % 5000) / 4.0) + fs + QString::number(i % 200 + 1) + qor::ItemSep + QString::number(i % 37 + 1) + "x3" + fs + QString::fromUtf8(Notes[i % std::size(Notes)]);
    }
    // The row as the program keeps it (six fields).
    QString text(int i) const
    {
        return periodName[i / customers] + qor::FieldSep + custPart[i % customers] + qor::FieldSep + tail(i);
    }
    // The row as read from the file, before the names are filled in (five fields).
    QString readText(int i) const
    {
        return periodName[i / customers] + qor::FieldSep + custCid[i % customers] + qor::FieldSep + tail(i);
    }
};

template <typename Fn>
void inChild(const char *title, Fn fn)
{
    std::fflush(stdout);
    const pid_t pid = fork();
    if (pid == 0) {
        std::printf("== %s\n", title);
        fn();
        std::fflush(stdout);
        _exit(0);  // skip tearing down a million rows
    }
    int status = 0;
    waitpid(pid, &status, 0);
}

void report(const char *what, Span ms, long n = 0)
{
    std::printf("  %-46s cpu %9.1f ms  wall %9.1f ms", what, ms.cpu, ms.wall);
    if (n > 0) std::printf("  (cpu %.3f us each)", ms.cpu * 1000.0 / double(n));
    std::printf("\n");
}

}  // namespace

int main(int argc, char **argv)
{
    const int n = argc > 1 ? std::atoi(argv[1]) : 1000000;
    std::printf("rows: %d\n", n);

    inChild("load in table order (append, resort), then operations", [n] {
        const Rows rows(n);
        const long base = currentRssKb();
        auto t0 = Clock::now();
        qint64 chars = 0;
        for (int i = 0; i < n; ++i) {
            const QString k = rows.key(i), t = rows.text(i);
            chars += k.size() + t.size();
        }
        const Span genMs = msSince(t0);
        report("making the row strings only (not the table)", genMs, n);

        qor::KeyedList list;
        t0 = Clock::now();
        for (int i = 0; i < n; ++i) list.append(rows.key(i), rows.text(i));
        const Span appendMs = msSince(t0);
        report("append (making strings included)", appendMs, n);
        report("append, table share only", {appendMs.wall - genMs.wall, appendMs.cpu - genMs.cpu}, n);
        t0 = Clock::now();
        const bool wasSorted = list.isSorted();
        report("isSorted", msSince(t0), n);
        t0 = Clock::now();
        list.resort();
        report("resort (already in order)", msSince(t0), n);
        const long loaded = currentRssKb();
        std::printf("  input was in order: %s\n", wasSorted ? "yes" : "NO");
        std::printf("  characters: %lld (%.1f MB as UTF-16)\n", (long long)chars, chars * 2.0 / 1e6);
        std::printf("  memory of the loaded table: %.1f MB, %.1f bytes/row, %.1f bytes/row beyond the characters\n",
                    (loaded - base) / 1024.0, (loaded - base) * 1024.0 / n,
                    ((loaded - base) * 1024.0 - chars * 2.0) / n);
        std::printf("  peak RSS of this process so far: %.1f MB\n", peakRssKb() / 1024.0);

        std::mt19937_64 rng(7);
        const int adds = 1000;
        std::vector<QString> newKeys, newTexts;
        for (int i = 0; i < adds; ++i) {
            newKeys.push_back(QStringLiteral("new%1").arg(i) + qor::FieldSep);
            newTexts.push_back(rows.text(int(rng() % quint64(n))) + "b");
        }
        t0 = Clock::now();
        for (int i = 0; i < adds; ++i) list.add(newKeys[size_t(i)], newTexts[size_t(i)]);
        report("1,000 adds into the table", msSince(t0), adds);
        t0 = Clock::now();
        for (int i = 0; i < adds; ++i) list.remove(newKeys[size_t(i)]);
        report("1,000 removes", msSince(t0), adds);

        const int probes = 1000000;
        std::vector<int> idx(probes);
        for (int &v : idx) v = int(rng() % quint64(n));
        std::vector<QString> keys;
        keys.reserve(probes);
        for (int v : idx) keys.push_back(rows.key(v));
        qint64 sum = 0;
        t0 = Clock::now();
        for (const QString &k : keys) sum += list.indexOf(k);
        report("indexOf, 1,000,000 random keys", msSince(t0), probes);
        t0 = Clock::now();
        for (int v : idx) sum += list.textView(v + 1).size();
        report("textView(i), 1,000,000 random positions", msSince(t0), probes);
        t0 = Clock::now();
        for (int i = 1; i <= list.count(); ++i) sum += list.textView(i).size();
        report("textView(i) for i = 1..count", msSince(t0), list.count());
        t0 = Clock::now();
        list.forEach([&](QStringView k, QStringView t) {
            sum += k.size() + t.size();
            return true;
        });
        report("forEach over all rows", msSince(t0), list.count());
        std::printf("  (checksum %lld)\n", (long long)sum);

        // A few customers renamed: their records are out of place until the re-sort.
        for (int i = 0; i < 1000; ++i) {
            const int pos = 1 + int(rng() % quint64(list.count()));
            const QString t = list.text(pos);
            const qsizetype sep = t.indexOf(qor::FieldSep);
            list.setText(pos, t.left(sep + 1) + (i % 2 ? "Aaron, Zed" : "Zuniga, Al") + t.mid(t.indexOf(qor::FieldSep, sep + 1)));
        }
        t0 = Clock::now();
        list.resort();
        report("resort after 1,000 rows were renamed", msSince(t0), list.count());
        std::printf("  sorted: %s\n", list.isSorted() ? "yes" : "NO");
    });

    inChild("load as the reader does: five-field rows, fill names by position, resort", [n] {
        const Rows rows(n);
        qor::KeyedList list;
        auto t0 = Clock::now();
        for (int i = 0; i < n; ++i) list.append(rows.key(i), rows.readText(i));
        report("append (making strings included)", msSince(t0), n);
        t0 = Clock::now();
        for (int i = 1; i <= n; ++i) list.setText(i, rows.text(i - 1));
        report("setText by position (making strings included)", msSince(t0), n);
        t0 = Clock::now();
        list.resort();
        report("resort (already in order)", msSince(t0), n);
        std::printf("  peak RSS: %.1f MB\n", peakRssKb() / 1024.0);
    });

    inChild("load in shuffled order (append, resort)", [n] {
        const Rows rows(n);
        std::vector<int> perm(static_cast<size_t>(n));
        for (int i = 0; i < n; ++i) perm[size_t(i)] = i;
        std::shuffle(perm.begin(), perm.end(), std::mt19937_64(11));
        qor::KeyedList list;
        auto t0 = Clock::now();
        for (int i : perm) list.append(rows.key(i), rows.text(i));
        report("append (making strings included)", msSince(t0), n);
        t0 = Clock::now();
        const bool wasSorted = list.isSorted();
        report("isSorted (stops at the first misorder)", msSince(t0));
        t0 = Clock::now();
        list.resort();
        report("resort (sorting)", msSince(t0), n);
        int wrong = 0;
        for (int i = 1; i <= n && wrong < 10; ++i)
            if (list.keyView(i) != rows.key(i - 1)) ++wrong;
        std::printf("  input was in order: %s; result matches table order: %s\n", wasSorted ? "yes" : "no",
                    wrong ? "NO" : "yes");
        std::printf("  peak RSS: %.1f MB\n", peakRssKb() / 1024.0);
    });

    inChild("build by one add per row (shuffled)", [n] {
        const Rows rows(n);
        std::vector<int> perm(static_cast<size_t>(n));
        for (int i = 0; i < n; ++i) perm[size_t(i)] = i;
        std::shuffle(perm.begin(), perm.end(), std::mt19937_64(12));
        qor::KeyedList list;
        const auto t0 = Clock::now();
        for (int i : perm) list.add(rows.key(i), rows.text(i));
        report("add each row at its sorted place", msSince(t0), n);
        std::printf("  sorted: %s\n", list.isSorted() ? "yes" : "NO");
    });
    return 0;
}
