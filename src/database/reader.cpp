// SPDX-License-Identifier: GPL-3.0-or-later
// ReadDatabase: the line reader of the database file.
//
// The file is taken in large blocks and worked on as bytes (linesource.h).
// Each physical line is cleaned once (outer blanks and tabs dropped, entities
// resolved) straight into the line or record buffer; element values are
// decoded from Windows-1252 only when they go into a row text (cleantext.h).
// The structure follows the line-based scheme the writer lays out: sections
// found by whole lines, here; records collected line by line and their
// elements found in the joined text (sectionreader.h, tagindex.h), by one
// reader per section. Every significant line is checked against the shape of
// the file (filestructure.h), so a damaged file is refused whole.
//
// Rows are appended in file order and sorted once at the end; the invoice
// records get their customer names here when the customer is already known,
// so most record texts are built once, in their final form.
#include "database.h"
#include "sectionreader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <new>
#include <optional>
#include <utility>

namespace qor {

namespace {

using namespace dbread;

// Runs the section readers in the order their tags stand in the file.
class Reader {
public:
    Reader(QFile &file, Tables &db, detail::AfterRead &after) : m_in(file, db, after) {}

    bool sectionFound = false;
    std::optional<DuplicateKey> &duplicate() { return m_in.duplicate; }
    std::optional<StructureError> damage;
    LineSource &source() { return m_in.src; }

    void run()
    {
        try {
            readSections();
            if (!m_in.duplicate && !m_in.src.failed()) m_in.shape.finish(m_in.src.lineNumber());
        } catch (const StructureError &e) {
            damage = e;
        }
    }

private:
    void readSections()
    {
        while (!m_in.src.atEnd() && !m_in.duplicate) {
            m_in.lineBuf.truncate(0);
            m_in.xmlUnescape(m_in.lineBuf);
            if (m_in.current("<companyinfo>")) {
                sectionFound = true;
                readCompanyInfo(m_in);
            } else if (m_in.current("<customers>")) {
                sectionFound = true;
                readCustomers(m_in);
            } else if (m_in.current("<billperiods>")) {
                sectionFound = true;
                readBillPeriods(m_in);
            } else if (m_in.current("<productsandservices>")) {
                sectionFound = true;
                // Items that come after records: the records must be checked again later.
                if (m_recordsSeen) m_itemsLate = true;
                readProductsAndServices(m_in);
            } else if (m_in.current("<invoicerecords>")) {
                sectionFound = true;
                m_recordsSeen = true;
                readInvoiceRecords(m_in);
            }
        }
        m_in.after.valid = true;
        m_in.after.records = m_in.db.invoiceRecords.count();
        m_in.after.itemsChecked = !m_itemsLate;
    }

    SectionReader m_in;
    bool m_recordsSeen = false;
    bool m_itemsLate = false;
};

// Lower case as the reader takes it for numbers: the letters of the code page.
char16_t lowerInCodePage(char16_t c)
{
    if (c >= u'A' && c <= u'Z') return char16_t(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return char16_t(c + 32);
    switch (c) {
    case 0x160: return 0x161;
    case 0x152: return 0x153;
    case 0x17D: return 0x17E;
    case 0x178: return 0xFF;
    default: return c;
    }
}

QString shownName(const QString &path) { return QDir::toNativeSeparators(path); }

// The name under which a file is remembered for keeping a copy of it: the
// same file reached by another path is the same file.
QString fileKey(const QString &path)
{
    const QFileInfo info(path);
    const QString canonical = info.canonicalFilePath();
    return canonical.isEmpty() ? info.absoluteFilePath() : canonical;
}

ReadResult rejected(const QString &message, int line = 0, bool keepCopy = false)
{
    ReadResult r;
    r.status = ReadResult::Status::Rejected;
    r.message = message;
    r.line = line;
    r.keepsCopyOnSave = keepCopy;
    return r;
}

}  // namespace

QString detail::recordNumber(QStringView text, bool dropK)
{
    QString out;
    out.reserve(text.size());
    for (QChar ch : text) {
        const char16_t c = lowerInCodePage(ch.unicode());
        if (c == u' ' || (dropK && c == u'k')) continue;
        out += QChar(c);
    }
    return out;
}

bool detail::usableNumber(QStringView number) { return dbread::leadingNumberPositive(number); }

ReadResult Database::read(const QString &path) { return read(path, MissingFile::Create); }

ReadResult Database::read(const QString &path, MissingFile missing)
{
    // Running out of memory half-way is told like any other refusal: the
    // tables are left empty and the file as it is, with a copy kept on save.
    auto readWhole = [&]() -> ReadResult {
        clear();
        const QFileInfo info(path);
        const QString absolute = fileKey(path);
        const QString name = shownName(path);

        if (!info.exists()) {
            if (missing == MissingFile::Reject)
                return rejected(QStringLiteral("The database file \"%1\" does not exist.").arg(name));
            QFile made(path);
            // Readable by the user alone, whatever the umask.
            if (!made.open(QIODevice::WriteOnly | QIODevice::NewOnly, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
                return rejected(QStringLiteral("The database file \"%1\" does not exist and cannot be created: %2.")
                                    .arg(name, made.errorString()));
            made.close();
            m_keepCopyOf.remove(absolute);  // nothing left of an older, unreadable file
            ReadResult r;
            r.status = ReadResult::Status::Created;
            return r;
        }
        if (info.isDir())
            return rejected(QStringLiteral("\"%1\" is a folder, not a database file.").arg(name));
        // A pipe or a device would block the read or never end: refused before it is opened.
        if (!info.isFile())
            return rejected(QStringLiteral("\"%1\" is not a regular file (a pipe, socket or device), so it cannot be "
                                           "a database file.")
                                .arg(name));

        // From here on the path holds something this program did not read: the
        // first save over it must keep a copy unless the read succeeds.
        QFile file(path);
        // The reader keeps its own blocks; a second buffer would only copy them.
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            m_keepCopyOf.insert(absolute);
            return rejected(QStringLiteral("The database file \"%1\" cannot be opened: %2.").arg(name, file.errorString()),
                            0, true);
        }
        if (file.size() > MaxFileSize) {
            m_keepCopyOf.insert(absolute);
            return rejected(QStringLiteral("The database file \"%1\" cannot be loaded: at %2 MB it is larger than the "
                                           "%3 MB this program can hold in memory.")
                                .arg(name, QString::number(file.size() >> 20), QString::number(MaxFileSize >> 20)),
                            0, true);
        }

        // Read into fresh tables; they replace the current ones only on success,
        // so a rejected file never leaves half-filled tables behind.
        Tables fresh;
        detail::AfterRead after;
        Reader reader(file, fresh, after);
        reader.run();
        LineSource &src = reader.source();

        if (src.failed() && !src.ioError().isEmpty()) {
            m_keepCopyOf.insert(absolute);
            return rejected(QStringLiteral("The database file \"%1\" could not be read: %2.").arg(name, src.ioError()),
                            0, true);
        }
        if (src.failed()) {
            m_keepCopyOf.insert(absolute);
            const int line = int(src.badLine());
            return rejected(QStringLiteral("The database file \"%1\" is not a text database: line %2 holds the byte "
                                           "0x%3, which such a file never contains.")
                                .arg(name, QString::number(line),
                                     QStringLiteral("%1").arg(int(src.badByte()), 2, 16, QLatin1Char('0'))),
                            line, true);
        }
        if (reader.duplicate()) {
            m_keepCopyOf.insert(absolute);
            const int line = int(reader.duplicate()->line);
            return rejected(QStringLiteral("The database file \"%1\" cannot be loaded: line %2 holds %3, and a key may "
                                           "stand only once.")
                                .arg(name, QString::number(line), reader.duplicate()->what),
                            line, true);
        }

        if (reader.damage) {
            m_keepCopyOf.insert(absolute);
            const StructureError &d = *reader.damage;
            const int line = int(d.line);
            QString why;
            if (line == 0)
                why = QStringLiteral(
                          "The database file \"%1\" cannot be loaded: it holds no section of a database "
                          "(expected %2). It may be another kind of file.")
                          .arg(name, d.expected);
            else if (d.cutOff)
                why = QStringLiteral(
                          "The database file \"%1\" cannot be loaded: it ends at line %2, where %3 was "
                          "expected. It looks cut off.")
                          .arg(name, QString::number(line), d.expected);
            else
                why = QStringLiteral(
                          "The database file \"%1\" cannot be loaded: line %2 holds \"%3\" where %4 was "
                          "expected. The file looks damaged.")
                          .arg(name, QString::number(line), d.found, d.expected);
            return rejected(why, line, true);
        }

        m_t.swap(fresh);
        m_afterRead = std::move(after);
        m_t.customers.resort();
        m_t.periods.resort();
        m_t.items.resort();
        // The records are sorted once, by fillInvoiceRecordNames(), which every
        // load runs next: their final text is only known then.

        ReadResult r;
        if (!reader.sectionFound) {
            // A non-empty file without any section: read as empty, but its content
            // is not ours to throw away on the next save.
            file.seek(0);
            bool content = false;
            char chunk[65536];
            qint64 got;
            while (!content && (got = file.read(chunk, sizeof chunk)) > 0)
                for (qint64 i = 0; i < got && !content; ++i)
                    content = chunk[i] != ' ' && chunk[i] != '\t' && chunk[i] != '\r' && chunk[i] != '\n';
            if (content) {
                m_keepCopyOf.insert(absolute);
                r.keepsCopyOnSave = true;
            }
        }
        if (!r.keepsCopyOnSave) m_keepCopyOf.remove(absolute);
        return r;
    };
    try {
        return readWhole();
    } catch (const std::bad_alloc &) {
        clear();
        m_keepCopyOf.insert(fileKey(path));
        return rejected(QStringLiteral("The database file \"%1\" cannot be loaded: there is not enough memory "
                                       "to hold it. The file was left as it was.")
                            .arg(shownName(path)),
                        0, true);
    }
}

}  // namespace qor
