// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The shape of a database file: an optional root around the sections, each
// section a run of records (the company details are one record of their own),
// each record a run of elements, a value possibly over several lines. Every
// significant line passes through here before the reader acts on it, and the
// first line that doesn't fit ends the read: a damaged file is refused whole,
// never half read. Tags are compared in any case.
#include <QString>

namespace qor::dbread {

struct StructureError {
    qint64 line;          // 0: the file as a whole
    QString found;        // the line as it stands, shortened
    QString expected;     // what could stand there
    bool cutOff = false;  // the file ended first
};

class Structure {
public:
    enum Kind { Company,
                Customers,
                Periods,
                Items,
                Records,
                KindCount };

    bool sectionSeen() const { return m_sectionSeen; }

    // A whole element on one line: only a record holds one.
    void element(const char *s, qsizetype n, qint64 line)
    {
        if (m_at != At::Record) fail(s, n, line);
    }

    // The tags of invoice records the reader has already told apart
    // (1 a record opens, 2 it closes, 3 the section closes): the usual step
    // is taken at once, anything else goes the general way.
    void recordTag(int which, const char *s, qsizetype n, qint64 line)
    {
        static constexpr At from[4] = {At::After, At::Section, At::Record, At::Section};
        static constexpr At to[4] = {At::After, At::Record, At::Section, At::Outside};
        if (m_kind != Records || m_at != from[which]) return this->line(s, n, line);
        m_at = to[which];
        if (which == 1) m_recordAt = line;
    }

    // Any significant line, cleaned.
    void line(const char *s, qsizetype n, qint64 line);

    // At the end of the file.
    void finish(qint64 lastLine) const;

private:
    enum class At { Outside,
                    Section,
                    Record,
                    After };
    enum class Root { None,
                      Open,
                      Closed };

    bool recordOpen(const char *s, qsizetype n) const;
    bool elementTag(const char *s, qsizetype n) const;
    QString expectation() const;
    [[noreturn]] void fail(const char *s, qsizetype n, qint64 line) const;

    At m_at = At::Outside;
    Root m_root = Root::None;
    Kind m_kind = Company;
    bool m_sectionSeen = false;
    bool m_any = false;  // a significant line was seen
    qint64 m_sectionAt = 0, m_recordAt = 0, m_rootAt = 0;
};

}  // namespace qor::dbread
