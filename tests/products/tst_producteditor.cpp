// SPDX-License-Identifier: GPL-3.0-or-later
// The Products and Services panel's editor without a window: each step, and
// what the buttons and the entry fields then show.
#include "products/producteditor.h"

#include <QtTest>

using namespace qor;

class TstProductEditor : public QObject {
    Q_OBJECT

    // The two buttons ("-" marks a hidden one), the entry fields, which of
    // them ask for input, whether Enter adds, and what the fields hold.
    static QString view(const ProductEditor &e)
    {
        auto button = [](ProductEditor::Button b, const QString &caption) { return (b.shown ? "" : "-") + caption; };
        return QStringLiteral("%1 / %2 | %3fields %4%5 | %6 | %7;%8")
            .arg(button(e.addNew(), ProductEditor::addNewCaption(e.addNew().mode)),
                 button(e.cancel(), ProductEditor::cancelCaption(e.cancel().mode)), e.fieldsShown() ? "" : "-",
                 e.priceAsks() ? "P" : ".", e.nameAsks() ? "N" : ".", e.addIsDefault() ? "Enter" : "-", e.price(),
                 e.name());
    }

private slots:
    void transitions_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("shown");
        QTest::newRow("start") << ""
                               << "&New Product or Service / -&Cancel New | fields PN | - | ;";
        QTest::newRow("empty list") << "list0"
                                    << "&New Product or Service / -&Delete Existing | -fields PN | - | ;";
        QTest::newRow("list") << "list1"
                              << "&New Product or Service / &Delete Existing | -fields PN | - | ;";
        QTest::newRow("typing in the list") << "list1 p=5"
                                            << "&New Product or Service / &Delete Existing | -fields PN | - | 5;";
        QTest::newRow("entry") << "list1 new"
                               << "-&Add New / &Cancel New | fields PN | Enter | ;";
        QTest::newRow("not a price") << "new p=abc n=Soap"
                                     << "-&Add New / &Cancel New | fields P. | Enter | abc;Soap";
        QTest::newRow("price and name") << "new p=12.50 n=Soap"
                                        << "&Add New / &Cancel New | fields .. | Enter | 12.50;Soap";
        QTest::newRow("name taken back") << "new p=12.50 n=Soap n="
                                         << "-&Add New / &Cancel New | fields .N | Enter | 12.50;";
        QTest::newRow("price taken back") << "new n=Soap p=1 p="
                                          << "-&Add New / &Cancel New | fields P. | Enter | ;Soap";
        // Cancel keeps the typing in the hidden fields; the next entry empties them.
        QTest::newRow("cancelled") << "new p=7 list1"
                                   << "&New Product or Service / &Delete Existing | -fields .N | Enter | 7;";
        QTest::newRow("again") << "new p=7 list1 new"
                               << "-&Add New / &Cancel New | fields PN | Enter | ;";
    }
    void transitions()
    {
        QFETCH(QString, steps);
        QFETCH(QString, shown);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
        ProductEditor e;
        for (const QString &step : steps.split(' ', Qt::SkipEmptyParts)) {
            if (step == "new") e.startEntry();
            else if (step.startsWith("list")) e.showList(step.endsWith('1'));
            else if (step.startsWith("p=")) e.typedPrice(step.mid(2));
            else if (step.startsWith("n=")) e.typedName(step.mid(2));
            else QFAIL(qPrintable("no such step: " + step));
        }
        QCOMPARE(view(e), shown);
    }
};

QTEST_GUILESS_MAIN(TstProductEditor)
#include "tst_producteditor.moc"
