// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Reads back what a PDF shows: every word with its box, from poppler's
// pdftotext -bbox, in twips from the top left corner of its page.
#include <QList>
#include <QProcess>
#include <QRegularExpression>
#include <QSizeF>
#include <QString>

#include <algorithm>
#include <cmath>

struct PdfWord {
    int page = 0;  // from 0
    QString text;
    double left = 0, top = 0, right = 0, bottom = 0;  // twips
};

// With pageSizes, the size of each page in points.
inline QList<PdfWord> readPdfWords(const QString &pdf, QString *error = nullptr, QList<QSizeF> *pageSizes = nullptr)
{
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), pdf, QStringLiteral("-")});
    if (!p.waitForFinished(60000) || p.exitCode() != 0) {
        if (error) *error = QStringLiteral("pdftotext failed: ") + QString::fromLocal8Bit(p.readAllStandardError());
        return {};
    }
    static const QRegularExpression re(QStringLiteral(
        "<page width=\"([0-9.]+)\" height=\"([0-9.]+)\"|"
        "<word xMin=\"([0-9.]+)\" yMin=\"([0-9.]+)\" xMax=\"([0-9.]+)\" yMax=\"([0-9.]+)\">([^<]*)</word>"));
    QList<PdfWord> out;
    int page = -1;
    for (auto it = re.globalMatch(QString::fromUtf8(p.readAllStandardOutput())); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        if (m.captured(0).startsWith(QLatin1String("<page "))) {
            ++page;
            if (pageSizes) *pageSizes << QSizeF(m.captured(1).toDouble(), m.captured(2).toDouble());
        } else
            out << PdfWord{page,
                           m.captured(7)
                               .replace(QStringLiteral("&amp;"), QStringLiteral("&"))
                               .replace(QStringLiteral("&lt;"), QStringLiteral("<"))
                               .replace(QStringLiteral("&gt;"), QStringLiteral(">"))
                               .replace(QStringLiteral("&quot;"), QStringLiteral("\"")),
                           m.captured(3).toDouble() * 20,
                           m.captured(4).toDouble() * 20,
                           m.captured(5).toDouble() * 20,
                           m.captured(6).toDouble() * 20};
    }
    return out;
}

// The first word with that text on that page, or nullptr.
inline const PdfWord *findWord(const QList<PdfWord> &words, const QString &text, int page = 0)
{
    const auto it =
        std::find_if(words.begin(), words.end(), [&](const PdfWord &w) { return w.page == page && w.text == text; });
    return it == words.end() ? nullptr : &*it;
}

// The word with that text whose top is nearest `top` on that page.
inline const PdfWord *findWordNear(const QList<PdfWord> &words, const QString &text, double top, int page = 0)
{
    const PdfWord *best = nullptr;
    for (const PdfWord &w : words)
        if (w.page == page && w.text == text && (!best || std::abs(w.top - top) < std::abs(best->top - top))) best = &w;
    return best;
}

// The words of each page of a PDF, each followed by a blank.
inline QStringList pdfPageTexts(const QString &pdf)
{
    QStringList pages;
    for (const PdfWord &w : readPdfWords(pdf)) {
        pages.resize(std::max(pages.size(), qsizetype(w.page + 1)));
        pages[w.page] += w.text + u' ';
    }
    return pages;
}
