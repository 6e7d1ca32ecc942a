// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Reads back what a PDF shows: every word with its box, from poppler's
// pdftotext -bbox, in twips from the top left corner of its page.
#include <QFile>
#include <QList>
#include <QProcess>
#include <QRegularExpression>
#include <QString>
#include <QTemporaryDir>

#include <cmath>

struct PdfWord {
    int page = 0;  // from 0
    QString text;
    double left = 0, top = 0, right = 0, bottom = 0;  // twips
    double centre() const { return (left + right) / 2; }
};

inline QList<PdfWord> readPdfWords(const QString &pdf, QString *error = nullptr)
{
    QList<PdfWord> out;
    QTemporaryDir dir;
    const QString html = dir.filePath(QStringLiteral("words.html"));
    QProcess p;
    p.start(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), pdf, html});
    if (!p.waitForFinished(60000) || p.exitCode() != 0) {
        if (error)
            *error = QStringLiteral("pdftotext failed: ") + QString::fromLocal8Bit(p.readAllStandardError());
        return out;
    }
    QFile f(html);
    if (!f.open(QIODevice::ReadOnly))
        return out;
    const QString text = QString::fromUtf8(f.readAll());
    static const QRegularExpression pageRe(QStringLiteral("<page "));
    static const QRegularExpression wordRe(QStringLiteral(
        "<word xMin=\"([0-9.]+)\" yMin=\"([0-9.]+)\" xMax=\"([0-9.]+)\" yMax=\"([0-9.]+)\">([^<]*)</word>"));
    // Split by page, then read the words of each.
    const QStringList pages = text.split(pageRe);
    for (qsizetype pg = 1; pg < pages.size(); ++pg) {
        auto it = wordRe.globalMatch(pages[pg]);
        while (it.hasNext()) {
            const auto m = it.next();
            PdfWord w;
            w.page = int(pg - 1);
            w.left = m.captured(1).toDouble() * 20;
            w.top = m.captured(2).toDouble() * 20;
            w.right = m.captured(3).toDouble() * 20;
            w.bottom = m.captured(4).toDouble() * 20;
            w.text = m.captured(5).replace(QStringLiteral("&amp;"), QStringLiteral("&")).replace(QStringLiteral("&lt;"), QStringLiteral("<")).replace(QStringLiteral("&gt;"), QStringLiteral(">")).replace(QStringLiteral("&quot;"), QStringLiteral("\""));
            out << w;
        }
    }
    return out;
}

// The first word with that text on that page, or nullptr.
inline const PdfWord *findWord(const QList<PdfWord> &words, const QString &text, int page = 0)
{
    for (const PdfWord &w : words) {
        if (w.page == page && w.text == text)
            return &w;
    }
    return nullptr;
}

// The word with that text whose top is nearest `top` on that page.
inline const PdfWord *findWordNear(const QList<PdfWord> &words, const QString &text, double top, int page = 0)
{
    const PdfWord *best = nullptr;
    for (const PdfWord &w : words) {
        if (w.page == page && w.text == text && (!best || std::abs(w.top - top) < std::abs(best->top - top)))
            best = &w;
    }
    return best;
}
