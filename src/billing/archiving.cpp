#include "billing/archiving.h"

#include "billing/frmchecking.h"
#include "database/database.h"
#include "database/rowtypes.h"

namespace qor {

namespace {

std::function<void(float)> progressOf(FrmChecking *w) {
    return [w](float percent) {
        if (w) w->setProgress(percent);
    };
}

// The engine reports "deleted"/"archived"; the window and callers use the
// word itself.
QString wordOf(const QString &result) {
    if (result.endsWith(QLatin1Char('d'))) return result.chopped(1);
    return result;
}

void showResult(const QString &word) {
    if (FrmChecking *w = FrmChecking::existing()) {
        w->setProgress(100);
        w->setResultWord(word);
    }
}

}  // namespace

bool customerIsBilled(Database &db, QString &key, QWidget *owner) {
    FrmChecking *w = FrmChecking::showChecking(owner);
    key = plainNumber(key);
    return db.customerIsBilled(key, progressOf(w));
}

bool productIsBilled(Database &db, QString &key, QWidget *owner) {
    FrmChecking *w = FrmChecking::showChecking(owner);
    key = plainNumber(key);
    return db.productIsBilled(key, progressOf(w));
}

QString archiveCustomerStep(Database &db, const QString &number, bool found) {
    const QString key = numberKey(number);
    // A row already gone (a repeated step) is left alone rather than failing.
    if (!db.lvwCustomers.contains(key)) return {};
    const QString word = wordOf(Database::deleteOrArchiveCustomer(db.lvwCustomers, key, found));
    showResult(word);
    return word;
}

QString archiveProductStep(Database &db, const QString &number, bool found) {
    const QString key = numberKey(number);
    if (!db.lvwPAndS.contains(key)) return {};
    const QString word = wordOf(Database::deleteOrArchiveProduct(db.lvwPAndS, key, found));
    showResult(word);
    return word;
}

}  // namespace qor
