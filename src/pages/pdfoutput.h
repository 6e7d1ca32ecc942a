// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Pages to a PDF file, through the same painter as paper. Fonts are embedded
// (subsets, once per file) and a picture shown on many pages is stored once.
#include "pages/page.h"

#include <QList>
#include <QPageSize>
#include <QString>

#include <functional>

class QIODevice;

namespace qor::pages {

// The paper a user of this locale feeds: Letter where the locale measures in
// US units, A4 elsewhere.
QPageSize defaultPaper();

// Writes the pages as one PDF document, each page on a sheet of `paper`
// turned to the page's orientation, the page's top left corner at the
// sheet's. False with a reason when the file can't be written.
bool writePdf(const QList<Page> &pages, const QString &fileName, const QPageSize &paper = defaultPaper(),
              QString *error = nullptr);
bool writePdf(const QList<Page> &pages, QIODevice *device, const QPageSize &paper = defaultPaper(),
              QString *error = nullptr);
// The same for a long run: next() gives the following pages each time (one
// customer's, say) and an empty list at the end, so the run holds a few
// pages at a time instead of the whole document.
bool writePdf(const std::function<QList<Page>()> &next, QIODevice *device, const QPageSize &paper = defaultPaper(),
              QString *error = nullptr);
bool writePdf(const std::function<QList<Page>()> &next, const QString &fileName,
              const QPageSize &paper = defaultPaper(), QString *error = nullptr);

// Every PDF file the programs write goes through here: only a whole
// document (from "%PDF-" to its last "%%EOF") is written, beside the target,
// read back and compared, and only then renamed into place, so an old file
// of that name stays whole until the new one is; a target that is not a
// regular file is left alone. Empty on success, else why not.
QString savePdf(const QByteArray &pdf, const QString &fileName);

}  // namespace qor::pages
