// SPDX-License-Identifier: GPL-3.0-or-later
// bench_db: how fast the database engine loads and saves a realistic file, and
// how much memory a load takes, next to a general XML parser and a plain file
// copy. Prints a table and PASS/FAIL lines; it is not a test.
//
// Every measurement runs in a fresh child process (this program re-executed
// with a mode argument) so that the peak resident set of one measurement is not
// inflated by another, nor by the generator. The parent stays small for the
// same reason: it only spawns, copies and compares files.
//
//   bench_db [--dir DIR] [--small-only] [--large-records N] [--runs N] [--locale NAME]
#include "dbgen.h"

#include "database/database.h"
#include "database/keyedlist.h"
#include "database/recovery.h"
#include "database/regional.h"
#include "database/rowtypes.h"

#include <QByteArray>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <pugixml.hpp>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace qor::bench;
using Clock = std::chrono::steady_clock;
double msSince(Clock::time_point t0)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

// ---------------------------------------------------------------------------
// Child side. Each mode prints "name=value" lines on stdout and ends with
// _exit so that tearing down a million rows is not part of anyone's figure.

long vmHwmKb()
{
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray &line : f.readAll().split('\n'))
        if (line.startsWith("VmHWM:")) return line.mid(6).trimmed().split(' ').value(0).toLong();
    return -1;
}

[[noreturn]] void childExit(int code)
{
    std::printf("hwm_kb=%ld\n", vmHwmKb());
    std::fflush(stdout);
    _exit(code);
}

// Loads the way the window does at start: read, then the names of the records.
bool loadDb(qor::Database &db, const QString &path, double *ms)
{
    const auto t0 = Clock::now();
    const qor::ReadResult r = db.read(path);
    const double readMs = msSince(t0);
    QStringList problems;
    if (r.ok()) problems = db.fillInvoiceRecordNames();
    *ms = msSince(t0);
    std::printf("read_ms=%.2f\nfill_ms=%.2f\n", readMs, *ms - readMs);
    if (!r.ok()) {
        std::printf("error=%s\n", qPrintable(r.message.simplified()));
        return false;
    }
    std::printf("customers=%d\nperiods=%d\nproducts=%d\nrecords=%d\nproblems=%lld\n",
                db.customers().count(), db.periods().count(), db.items().count(),
                db.invoiceRecords().count(), qlonglong(problems.size()));
    return true;
}

int childMain(const QStringList &args)
{
    const QString mode = args.value(0);
    if (mode == QLatin1String("generate")) {
        DbParams p;
        const QString out = args.value(1);
        p.records = args.value(2).toInt();
        p.customers = args.value(3).toInt();
        p.products = args.value(4).toInt();
        p.periods = args.value(5).toInt();
        p.seed = args.value(6).toULongLong();
        qor::Database db;
        auto t0 = Clock::now();
        generate(db, p);
        std::printf("generate_ms=%.1f\n", msSince(t0));
        t0 = Clock::now();
        const qor::SaveResult s = db.save(out);
        std::printf("save_ms=%.1f\n", msSince(t0));
        if (!s.ok) {
            std::printf("error=%s\n", qPrintable(s.message.simplified()));
            childExit(1);
        }
        std::printf("records=%d\n", db.invoiceRecords().count());
        childExit(0);
    }
    if (mode == QLatin1String("load")) {
        qor::Database db;
        double ms = 0;
        const bool ok = loadDb(db, args.value(1), &ms);
        std::printf("time_ms=%.2f\n", ms);
        childExit(ok ? 0 : 1);
    }
    if (mode == QLatin1String("pugi")) {
        pugi::xml_document doc;
        const QByteArray path = QFile::encodeName(args.value(1));
        const auto t0 = Clock::now();
        const pugi::xml_parse_result r = doc.load_file(path.constData());
        const double ms = msSince(t0);
        std::printf("time_ms=%.2f\n", ms);
        if (!r) {
            std::printf("error=%s at offset %lld\n", r.description(), qlonglong(r.offset));
            childExit(1);
        }
        childExit(0);
    }
    if (mode == QLatin1String("save")) {
        qor::Database db;
        double loadMs = 0;
        if (!loadDb(db, args.value(1), &loadMs)) childExit(1);
        const QString out = args.value(2);
        auto t0 = Clock::now();
        const qor::SaveResult s = db.save(out);
        std::printf("time_ms=%.2f\n", msSince(t0));
        if (!s.ok) {
            std::printf("error=%s\n", qPrintable(s.message.simplified()));
            childExit(1);
        }
        // The in-memory half of a save, to tell formatting from disk time.
        t0 = Clock::now();
        const QByteArray bytes = db.serialize();
        std::printf("serialize_ms=%.2f\nserialize_bytes=%lld\n", msSince(t0), qlonglong(bytes.size()));
        // The recovery copy of unsaved changes: the window serialises on its
        // own thread and writes, reads back and compares on another.
        qor::Recovery recovery(QFileInfo(out).absolutePath() + QStringLiteral("/recovery"));
        t0 = Clock::now();
        const QString why = recovery.write(&bytes, args.value(1), {});
        std::printf("recovery_write_ms=%.2f\n", msSince(t0));
        recovery.clear();
        if (!why.isEmpty()) {
            std::printf("error=%s\n", qPrintable(why));
            childExit(1);
        }
        childExit(0);
    }
    if (mode == QLatin1String("keyedlist")) {
        qor::Database db;
        double loadMs = 0;
        if (!loadDb(db, args.value(1), &loadMs)) childExit(1);
        const int n = std::max(1, args.value(2).toInt());
        qor::Tables tables = db.release();
        qor::KeyedList &t = tables.invoiceRecords;
        const int before = t.count();
        // New records of a period that sorts among the others ("Bench ..." lands
        // between "August" and "December"), for customers spread over the
        // alphabet, so inserts hit the middle of the table, not its end.
        Rng rng(7);
        std::vector<QString> keys, texts;
        keys.reserve(size_t(n));
        texts.reserve(size_t(n));
        for (int i = 0; i < n; ++i) {
            const QString bp = QStringLiteral("Bench %1").arg(i % 7);
            const QString cid = QString::number(900000 + i);
            const QString name = randomPersonName(rng);
            keys.push_back(qor::record::keyFor(bp, cid));
            texts.push_back(qor::InvoiceRecordRow{bp, name, cid, QStringLiteral("12.5"),
                                                  qor::ItemEntry::join({QStringLiteral("7x2"), QStringLiteral("12")}),
                                                  QString()}
                                .text());
        }
        auto t0 = Clock::now();
        for (int i = 0; i < n; ++i) t.add(keys[size_t(i)], texts[size_t(i)]);
        const double addMs = msSince(t0);
        const int afterAdd = t.count();
        const bool sortedAfterAdd = t.isSorted();
        t0 = Clock::now();
        for (int i = 0; i < n; ++i) t.remove(keys[size_t(i)]);
        const double removeMs = msSince(t0);
        std::printf("rows=%d\nadds=%d\nadd_total_ms=%.3f\nadd_avg_us=%.3f\nremove_total_ms=%.3f\nremove_avg_us=%.3f\n",
                    before, n, addMs, addMs * 1000.0 / n, removeMs, removeMs * 1000.0 / n);
        std::printf("count_after_add=%d\ncount_after_remove=%d\nsorted_after_add=%d\n", afterAdd, t.count(),
                    int(sortedAfterAdd));
        childExit(afterAdd == before + n && t.count() == before && sortedAfterAdd ? 0 : 1);
    }
    std::fprintf(stderr, "bench_db: unknown child mode %s\n", qPrintable(mode));
    return 2;
}

// ---------------------------------------------------------------------------
// Parent side.

struct ChildRun {
    bool ok = false;
    std::map<QString, QString> values;
    long maxrssKb = 0;  // ru_maxrss from wait4; includes the parent's size at fork
    double num(const char *name) const
    {
        auto it = values.find(QString::fromLatin1(name));
        return it == values.end() ? -1 : it->second.toDouble();
    }
    QString text(const char *name) const
    {
        auto it = values.find(QString::fromLatin1(name));
        return it == values.end() ? QString() : it->second;
    }
};

QString g_self;
QString g_locale;

ChildRun runChild(const QStringList &args)
{
    ChildRun run;
    int fds[2];
    if (pipe(fds) != 0) return run;
    std::vector<QByteArray> store;
    store.push_back(QFile::encodeName(g_self));
    store.push_back("--child");
    store.push_back(g_locale.toUtf8());
    for (const QString &a : args) store.push_back(a.toUtf8());
    std::vector<char *> argv;
    for (auto &s : store) argv.push_back(s.data());
    argv.push_back(nullptr);
    std::fflush(stdout);
    const pid_t pid = fork();
    if (pid < 0) return run;
    if (pid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        close(fds[0]);
        close(fds[1]);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(fds[1]);
    QByteArray out;
    char buf[4096];
    for (;;) {
        const ssize_t got = read(fds[0], buf, sizeof buf);
        if (got > 0) out.append(buf, got);
        else if (got == 0 || errno != EINTR) break;
    }
    close(fds[0]);
    int status = 0;
    rusage ru{};
    while (wait4(pid, &status, 0, &ru) < 0 && errno == EINTR) {}
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    run.maxrssKb = ru.ru_maxrss;
    for (const QByteArray &line : out.split('\n')) {
        const int eq = line.indexOf('=');
        if (eq > 0) run.values[QString::fromUtf8(line.left(eq))] = QString::fromUtf8(line.mid(eq + 1));
    }
    if (!run.ok) {
        std::printf("  ! child %s failed (status %d): %s\n", qPrintable(args.join(QLatin1Char(' '))), status,
                    qPrintable(run.text("error")));
    }
    return run;
}

// Reads the file through once so that every measurement finds it in the page cache.
void warmCache(const QString &path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return;
    QByteArray buf(1 << 20, Qt::Uninitialized);
    while (f.read(buf.data(), buf.size()) > 0) {}
}

bool sameFileContent(const QString &a, const QString &b)
{
    QFile fa(a), fb(b);
    if (!fa.open(QIODevice::ReadOnly) || !fb.open(QIODevice::ReadOnly) || fa.size() != fb.size()) return false;
    QByteArray ba(1 << 20, Qt::Uninitialized), bb(1 << 20, Qt::Uninitialized);
    for (;;) {
        const qint64 na = fa.read(ba.data(), ba.size()), nb = fb.read(bb.data(), bb.size());
        if (na != nb || na < 0) return false;
        if (na == 0) return true;
        if (std::memcmp(ba.constData(), bb.constData(), size_t(na)) != 0) return false;
    }
}

bool fsyncFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    if (fd < 0) return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

// Runs the system's cp as its own process; with sync, the copy is then flushed
// to disk, which is what a save that syncs before renaming pays for.
double timeCp(const QString &from, const QString &to, bool sync)
{
    QFile::remove(to);
    ::sync();  // start from clean dirty-page state so one run doesn't pay for the last
    const auto t0 = Clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        const QByteArray f = QFile::encodeName(from), t = QFile::encodeName(to);
        execlp("cp", "cp", f.constData(), t.constData(), static_cast<char *>(nullptr));
        _exit(127);
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {}
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1;
    if (sync && !fsyncFile(to)) return -1;
    const double ms = msSince(t0);
    QFile::remove(to);
    return ms;
}

double timeCopyFile(const QString &from, const QString &to)
{
    QFile::remove(to);
    ::sync();
    const auto t0 = Clock::now();
    std::error_code ec;
    std::filesystem::copy_file(QFile::encodeName(from).toStdString(), QFile::encodeName(to).toStdString(), ec);
    const double ms = msSince(t0);
    QFile::remove(to);
    return ec ? -1 : ms;
}

struct Figures {
    QString label;
    qint64 bytes = 0;
    int records = 0, expectedRecords = 0;
    double loadMs = -1, readMs = -1, fillMs = -1, pugiMs = -1, saveMs = -1, serializeMs = -1, recoveryWriteMs = -1;
    double cpMs = -1, cpSyncMs = -1, copyFileMs = -1;
    long loadHwm = -1, pugiHwm = -1, loadMaxrss = -1, pugiMaxrss = -1;
    int roundTrip = -1;  // 1 identical, 0 differs, -1 not checked
    double addAvgUs = -1, removeAvgUs = -1;
    int keyedRows = -1;
    bool childFailed = false;
};

// Generates the database of p into dir unless a file with the same stamp is there.
QString ensureDatabase(const QString &dir, const DbParams &p)
{
    const QString path = dir + QStringLiteral("/%1.xml").arg(p.label);
    if (stampMatches(path, p)) {
        std::printf("  reusing %s (stamp matches)\n", qPrintable(path));
        return path;
    }
    QFile::remove(path + QStringLiteral(".stamp"));
    std::printf("  generating %s ...\n", qPrintable(path));
    std::fflush(stdout);
    const ChildRun g = runChild({QStringLiteral("generate"), path, QString::number(p.records),
                                 QString::number(p.customers), QString::number(p.products),
                                 QString::number(p.periods), QString::number(p.seed)});
    if (!g.ok) return QString();
    std::printf("  generated %d records in %.0f ms, first save %.0f ms\n", int(g.num("records")),
                g.num("generate_ms"), g.num("save_ms"));
    writeStamp(path, p);
    return path;
}

template <class F>
double bestOf(int runs, F f)
{
    double best = -1;
    for (int i = 0; i < runs; ++i) {
        const double v = f();
        if (v >= 0 && (best < 0 || v < best)) best = v;
    }
    return best;
}

Figures measure(const QString &path, const DbParams &p, int runs, int adds)
{
    Figures fig;
    fig.label = p.label;
    fig.expectedRecords = p.records;
    fig.bytes = QFileInfo(path).size();
    warmCache(path);
    const QString dir = QFileInfo(path).absolutePath();

    // Interleave the two parsers so both see the same machine state.
    for (int i = 0; i < runs; ++i) {
        const ChildRun l = runChild({QStringLiteral("load"), path});
        if (l.ok) {
            fig.records = int(l.num("records"));
            if (fig.loadMs < 0 || l.num("time_ms") < fig.loadMs) {
                fig.loadMs = l.num("time_ms");
                fig.readMs = l.num("read_ms");
                fig.fillMs = l.num("fill_ms");
            }
            fig.loadHwm = std::max(fig.loadHwm, long(l.num("hwm_kb")));
            fig.loadMaxrss = std::max(fig.loadMaxrss, l.maxrssKb);
            if (i == 0 && l.num("problems") != 0)
                std::printf("  ! load reported %d problem(s) on a generated file\n", int(l.num("problems")));
        } else {
            fig.childFailed = true;
        }
        const ChildRun x = runChild({QStringLiteral("pugi"), path});
        if (x.ok) {
            if (fig.pugiMs < 0 || x.num("time_ms") < fig.pugiMs) fig.pugiMs = x.num("time_ms");
            fig.pugiHwm = std::max(fig.pugiHwm, long(x.num("hwm_kb")));
            fig.pugiMaxrss = std::max(fig.pugiMaxrss, x.maxrssKb);
        } else {
            fig.childFailed = true;
        }
    }

    const QString saved = dir + QStringLiteral("/%1.saved.xml").arg(p.label);
    for (int i = 0; i < runs; ++i) {
        QFile::remove(saved);
        ::sync();
        const ChildRun s = runChild({QStringLiteral("save"), path, saved});
        if (!s.ok) {
            fig.childFailed = true;
            continue;
        }
        if (fig.saveMs < 0 || s.num("time_ms") < fig.saveMs) fig.saveMs = s.num("time_ms");
        if (fig.serializeMs < 0 || s.num("serialize_ms") < fig.serializeMs) fig.serializeMs = s.num("serialize_ms");
        if (fig.recoveryWriteMs < 0 || s.num("recovery_write_ms") < fig.recoveryWriteMs)
            fig.recoveryWriteMs = s.num("recovery_write_ms");
        // A file written by the engine, read and written again, must come out
        // byte for byte the same.
        if (i == 0) fig.roundTrip = sameFileContent(path, saved) ? 1 : 0;
    }
    QFile::remove(saved);

    const QString copy = dir + QStringLiteral("/%1.copy.xml").arg(p.label);
    fig.cpMs = bestOf(runs, [&] { return timeCp(path, copy, false); });
    fig.cpSyncMs = bestOf(runs, [&] { return timeCp(path, copy, true); });
    fig.copyFileMs = bestOf(runs, [&] { return timeCopyFile(path, copy); });

    if (adds > 0) {
        const ChildRun k = runChild({QStringLiteral("keyedlist"), path, QString::number(adds)});
        if (k.ok) {
            fig.addAvgUs = k.num("add_avg_us");
            fig.removeAvgUs = k.num("remove_avg_us");
            fig.keyedRows = int(k.num("rows"));
        } else {
            fig.childFailed = true;
        }
    }
    return fig;
}

QString ms(double v) { return v < 0 ? QStringLiteral("n/a") : QString::number(v, 'f', v < 100 ? 1 : 0) + QStringLiteral(" ms"); }
QString mb(long kb) { return kb < 0 ? QStringLiteral("n/a") : QString::number(kb / 1024.0, 'f', 1) + QStringLiteral(" MiB"); }

QByteArray loadAverage()
{
    QFile f(QStringLiteral("/proc/loadavg"));
    return f.open(QIODevice::ReadOnly) ? f.readAll().trimmed() : QByteArray("n/a");
}

int g_failures = 0;
void verdict(bool pass, const QString &what)
{
    if (!pass) ++g_failures;
    std::printf("%s  %s\n", pass ? "PASS" : "FAIL", qPrintable(what));
}

void report(const Figures &f)
{
    std::printf("\n== %s database: %.1f MB = %.1f MiB (%lld bytes), %d invoice records ==\n", qPrintable(f.label),
                f.bytes / 1e6, f.bytes / 1048576.0, qlonglong(f.bytes), f.records);
    std::printf("  %-40s %12s %14s %14s\n", "measurement", "best time", "peak RSS", "ru_maxrss");
    std::printf("  %-40s %12s %14s %14s\n", "our load (read + record names + sort)", qPrintable(ms(f.loadMs)),
                qPrintable(mb(f.loadHwm)), qPrintable(mb(f.loadMaxrss)));
    std::printf("  %-40s %12s\n", "  of which: read", qPrintable(ms(f.readMs)));
    std::printf("  %-40s %12s\n", "  of which: record names + sort", qPrintable(ms(f.fillMs)));
    std::printf("  %-40s %12s %14s %14s\n", "pugixml load_file (parse only)", qPrintable(ms(f.pugiMs)),
                qPrintable(mb(f.pugiHwm)), qPrintable(mb(f.pugiMaxrss)));
    std::printf("  %-40s %12s\n", "our save (write, sync, rename)", qPrintable(ms(f.saveMs)));
    std::printf("  %-40s %12s\n", "  of which: serialize in memory", qPrintable(ms(f.serializeMs)));
    std::printf("  %-40s %12s\n", "recovery copy: write, read back (thread)", qPrintable(ms(f.recoveryWriteMs)));
    std::printf("  %-40s %12s\n", "cp", qPrintable(ms(f.cpMs)));
    std::printf("  %-40s %12s\n", "cp + fsync of the copy", qPrintable(ms(f.cpSyncMs)));
    std::printf("  %-40s %12s\n", "std::filesystem::copy_file", qPrintable(ms(f.copyFileMs)));
    if (f.addAvgUs >= 0)
        std::printf("  KeyedList in a %d-row record table: add %.2f us/row, remove %.2f us/row (avg of 1,000)\n",
                    f.keyedRows, f.addAvgUs, f.removeAvgUs);
    std::printf("  peak RSS = VmHWM of the child's own address space; ru_maxrss also counts the parent's size at fork\n");

    const QString tag = f.label + QStringLiteral(": ");
    verdict(!f.childFailed, tag + QStringLiteral("every measurement ran"));
    verdict(f.records == f.expectedRecords,
            tag + QStringLiteral("load gives %1 invoice records, generated %2").arg(f.records).arg(f.expectedRecords));
    verdict(f.roundTrip == 1, tag + QStringLiteral("read + save gives back the generated file byte for byte"));
    verdict(f.loadMs >= 0 && f.pugiMs >= 0 && f.loadMs <= f.pugiMs,
            tag + QStringLiteral("load time %1 <= pugixml parse %2").arg(ms(f.loadMs), ms(f.pugiMs)));
    verdict(f.loadHwm > 0 && f.pugiHwm > 0 && f.loadHwm <= f.pugiHwm,
            tag + QStringLiteral("load peak RSS %1 <= pugixml peak RSS %2").arg(mb(f.loadHwm), mb(f.pugiHwm)));
    verdict(f.saveMs >= 0 && f.cpSyncMs > 0 && f.saveMs <= 2 * f.cpSyncMs,
            tag + QStringLiteral("save %1 <= 2 x (cp + fsync) %2 = %3")
                      .arg(ms(f.saveMs), ms(f.cpSyncMs), ms(2 * f.cpSyncMs)));
    std::printf("      (for reference: 2 x plain cp = %s; save %s it)\n", qPrintable(ms(2 * f.cpMs)),
                f.saveMs >= 0 && f.saveMs <= 2 * f.cpMs ? "is within" : "is over");
}

}  // namespace

int main(int argc, char **argv)
{
    QStringList args;
    for (int i = 1; i < argc; ++i) args << QString::fromLocal8Bit(argv[i]);

    if (args.value(0) == QLatin1String("--child")) {
        QLocale::setDefault(QLocale(args.value(1)));
        return childMain(args.mid(2));
    }

    QString dir;
    bool smallOnly = false;
    int largeRecords = 1000000, runs = 3;
    // The machine's locale may be the bare C locale, which has no currency form;
    // a billing program is always run in a real one.
    g_locale = QLocale::system().name();
    if (QLocale::system().language() == QLocale::C) g_locale = QStringLiteral("en_US");
    for (int i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == QLatin1String("--dir")) dir = args.value(++i);
        else if (a == QLatin1String("--small-only")) smallOnly = true;
        else if (a == QLatin1String("--large-records")) largeRecords = args.value(++i).toInt();
        else if (a == QLatin1String("--runs")) runs = std::max(1, args.value(++i).toInt());
        else if (a == QLatin1String("--locale")) g_locale = args.value(++i);
        else {
            std::fprintf(stderr,
                         "usage: bench_db [--dir DIR] [--small-only] [--large-records N] [--runs N] [--locale NAME]\n");
            return 64;
        }
    }
    // 120 periods of at most one record per customer and period.
    if (largeRecords < 1200 || largeRecords > 1200000) {
        std::fprintf(stderr, "bench_db: --large-records must be from 1200 to 1200000\n");
        return 64;
    }
    QLocale::setDefault(QLocale(g_locale));

    char self[4096];
    const ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) {
        std::fprintf(stderr, "bench_db: cannot find its own executable\n");
        return 1;
    }
    g_self = QFile::decodeName(QByteArray(self, int(n)));

    QTemporaryDir tmp;
    if (dir.isEmpty()) {
        if (!tmp.isValid()) {
            std::fprintf(stderr, "bench_db: cannot make a temporary directory\n");
            return 1;
        }
        dir = tmp.path();
    } else if (!QDir().mkpath(dir)) {
        std::fprintf(stderr, "bench_db: cannot make %s\n", qPrintable(dir));
        return 1;
    }
    dir = QFileInfo(dir).absoluteFilePath();

    std::printf("bench_db: directory %s, locale %s (currency form of 1234.5: %s), best of %d runs\n",
                qPrintable(dir), qPrintable(g_locale), qPrintable(qor::Money::fromCents(123450).toCurrencyText()), runs);

    // Other work on the machine skews every figure; say how busy it was.
    std::printf("bench_db: load average at start %s\n", loadAverage().constData());

    std::vector<DbParams> dbs;
    dbs.push_back(smallParams(g_locale));
    if (!smallOnly) dbs.push_back(largeParams(g_locale, largeRecords));

    std::vector<Figures> all;
    for (const DbParams &p : dbs) {
        const QString path = ensureDatabase(dir, p);
        if (path.isEmpty()) {
            verdict(false, p.label + QStringLiteral(": database generated"));
            continue;
        }
        const qint64 size = QFileInfo(path).size();
        std::printf("  %s: %.1f MB (%lld bytes)\n", qPrintable(path), size / 1e6, qlonglong(size));
        all.push_back(measure(path, p, runs, p.label == QLatin1String("large") ? 1000 : 0));
        report(all.back());
        std::fflush(stdout);
    }
    std::printf("\nbench_db: load average at end %s\n", loadAverage().constData());
    std::printf("bench_db: %d target(s) failed\n", g_failures);
    return g_failures == 0 ? 0 : 1;
}
