// SPDX-License-Identifier: GPL-3.0-or-later
// Replays the fuzzing corpus kept in the repository: every file in it must
// make the round trip (or be refused). Runs without libFuzzer.
#include "roundtrip.h"

#include <QDir>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

class TestFuzzCorpus : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

private slots:
    void initTestCase()
    {
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        QVERIFY(dir.isValid());
    }

    void replay_data()
    {
        QTest::addColumn<QString>("file");
        const QDir corpus(QStringLiteral(QOR_CORPUS_DIR));
        const QStringList files = corpus.entryList(QDir::Files, QDir::Name);
        QVERIFY2(files.size() >= 10, "the corpus is missing");
        for (const QString &f : files) QTest::newRow(qPrintable(f)) << corpus.filePath(f);
    }

    void replay()
    {
        QFETCH(QString, file);
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QString problem = qor::fuzz::checkRoundTrip(f.readAll(), dir.path());
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
    }
};

QTEST_GUILESS_MAIN(TestFuzzCorpus)
#include "tst_fuzzcorpus.moc"
