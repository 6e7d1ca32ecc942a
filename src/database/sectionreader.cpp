// SPDX-License-Identifier: GPL-3.0-or-later
#include "sectionreader.h"

#include <cstring>

namespace qor::dbread {

SectionReader::SectionReader(QFile &file, Tables &tables, detail::AfterRead &afterRead)
    : src(file), db(tables), after(afterRead)
{
    lineBuf.reserve(1024);
    rec.reserve(4096);
}

void SectionReader::xmlUnescape(QByteArray &out)
{
    const qsizetype mark = out.size();
    cur = &out;
    curSpan = {mark, 0};
    const char *b;
    qsizetype n;
    while (src.next(b, n)) {
        out.truncate(mark);
        const bool bang = cleanLine(b, n, out);
        curSpan = {mark, out.size() - mark};
        const bool accepted = curSpan.len > 0 && !(bang && hasComment(out.constData() + mark, curSpan.len));
        if (accepted) shape.line(out.constData() + mark, curSpan.len, src.lineNumber());
        if (accepted || src.atEnd()) return;
    }
    out.truncate(mark);
    curSpan = {mark, 0};
}

void SectionReader::freshRecord()
{
    if (rec.capacity() > (qsizetype(64) << 20)) rec = QByteArray();
    rec.truncate(0);
}


void SectionReader::recordLine()
{
    cur = &rec;
    const char *b;
    qsizetype n;
    while (src.next(b, n)) {
        if (!appendCleaned(b, n, rec.size())) continue;
        if (curSpan.len) shape.line(rec.constData() + curSpan.at, curSpan.len, src.lineNumber());
        return;
    }
    curSpan = {rec.size(), 0};
}

SectionReader::Next SectionReader::xmlNextRecord(const char *closeTag, const char *recordTag, const char *attr, QString &value, bool dropK)
{
    value.clear();
    if (src.atEnd()) return Next::EndOfFile;
    lineBuf.truncate(0);
    xmlUnescape(lineBuf);
    headerLine = src.lineNumber();
    char *s = lineBuf.data();
    qsizetype n = lineBuf.size();
    for (qsizetype i = 0; i < n; ++i) {
        if (s[i] == Marker) i += 3;  // a character reference stays as it is
        else s[i] = char(lowerByte(s[i]));
    }
    if (equalsLower(s, n, closeTag, qsizetype(std::strlen(closeTag)))) return Next::EndOfTable;
    qsizetype w = 0;
    for (qsizetype i = 0; i < n; ++i)
        if (s[i] != ' ') s[w++] = s[i];
    lineBuf.truncate(w);
    s = lineBuf.data();
    n = w;
    QByteArray head = "<";
    head += recordTag;
    head += attr;
    head += "=\"";
    const qsizetype h = head.size();
    if (n < h + 2 || std::memcmp(s, head.constData(), size_t(h)) != 0 || s[n - 2] != '"' || s[n - 1] != '>')
        return Next::Value;
    for (qsizetype i = h; i + 1 < n; ++i)
        if (s[i] == '"' && s[i + 1] == '>') {
            value = detail::recordNumber(decoded(s + h, i - h), dropK);
            break;
        }
    return Next::Value;
}

}  // namespace qor::dbread
