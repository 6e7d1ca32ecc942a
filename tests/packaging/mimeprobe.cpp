// SPDX-License-Identifier: GPL-3.0-or-later
// Prints the type Qt's MIME lookup gives each file, by name and content, as
// Qt programs and the KDE desktop see it:   qor-mimeprobe FILE...
#include <QCoreApplication>
#include <QMimeDatabase>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const QMimeDatabase db;
    for (const QString &file : app.arguments().mid(1))
        out << file << ": " << db.mimeTypeForFile(file).name() << '\n';
    return 0;
}
