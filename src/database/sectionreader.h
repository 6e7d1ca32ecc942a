// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// What the readers of the five sections share: the lines of the file as
// XmlUnescape gives them (CurrentLine), records collected line by line into
// one buffer, the number of a record header, the tables being filled, and
// what one section leaves for another (the customers' names and the item
// numbers that the invoice records name).
//
// Each section has a reader of its own (readcompany.cpp, readcustomers.cpp,
// readperiods.cpp, readitems.cpp, readrecords.cpp); the driver in reader.cpp
// finds the section tags and runs them.
#include "cleantext.h"
#include "database.h"
#include "filestructure.h"
#include "linesource.h"
#include "tagindex.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace qor::dbread {

struct DuplicateKey {
    qint64 line;
    QString what;
};

class SectionReader {
public:
    SectionReader(QFile &file, Tables &tables, detail::AfterRead &afterRead);

    enum class Next { Value,
                      EndOfTable,
                      EndOfFile };

    // Is CurrentLine, in lower case, this literal?
    template <qsizetype N>
    bool current(const char (&lowerLit)[N]) const
    {
        return equalsLower(cur->constData() + curSpan.at, curSpan.len, lowerLit, N - 1);
    }

    // XmlUnescape: appends the next significant line, cleaned, to out and
    // makes it CurrentLine. At the end of the file the last line read is
    // given back even if it was blank or a comment.
    void xmlUnescape(QByteArray &out);
    // Empties the record buffer for the next record; the room of a huge one
    // goes back to the system.
    void freshRecord();
    // One more line of the record, cleaned, after a line break when the
    // record already holds something (start is its size before the line).
    // Lines are joined by "\n", which no cleaned line holds, so that a value
    // written over several lines keeps its breaks; between elements the break
    // means nothing. False for a comment line: it adds nothing, the record
    // is as it was.
    bool appendCleaned(const char *b, qsizetype n, qsizetype start)
    {
        if (start) rec.append('\n');
        const qsizetype mark = rec.size();
        const bool bang = cleanLine(b, n, rec);
        curSpan = {mark, rec.size() - mark};
        if (bang && hasComment(rec.constData() + mark, curSpan.len)) {
            rec.truncate(start);
            return false;
        }
        return true;
    }
    // The next significant line of a record, appended to it as CurrentLine.
    void recordLine();
    // XmlNextRecord: the attribute value of a record header line, in lower
    // case; headerLine is then the header's line number.
    Next xmlNextRecord(const char *closeTag, const char *recordTag, const char *attr, QString &value, bool dropK);

    // Values of the record buffer, decoded.
    QString text(Span sp) const { return decoded(rec.constData() + sp.at, sp.len); }
    QString element(const char *lowerName) const { return text(tags.element(lowerName)); }

    // Appends a row; a key that stands twice ends the read. `what` tells the
    // duplicate in the message; it is only worked out then.
    template <typename What>
    bool addRow(KeyedList &table, QString key, QString rowText, qint64 line, What &&what)
    {
        try {
            table.append(std::move(key), std::move(rowText));
            return true;
        } catch (const KeyedListError &) {
            duplicate = DuplicateKey{line, what()};
            return false;
        }
    }

    LineSource src;
    Structure shape;
    Tables &db;
    detail::AfterRead &after;
    QByteArray lineBuf;  // CurrentLine outside records
    QByteArray rec;      // record buffer: the record's lines joined
    const QByteArray *cur = &lineBuf;
    Span curSpan;  // CurrentLine within *cur
    qint64 headerLine = 0;
    TagIndex tags;
    NumberSet customers;  // customer number -> index in nameAt
    QString namePool;     // customer names without the archive mark, one after the other
    std::vector<Span> nameAt;
    NumberSet items;
    std::optional<DuplicateKey> duplicate;
};

void readCompanyInfo(SectionReader &in);
void readCustomers(SectionReader &in);
void readBillPeriods(SectionReader &in);
void readProductsAndServices(SectionReader &in);
void readInvoiceRecords(SectionReader &in);

}  // namespace qor::dbread
