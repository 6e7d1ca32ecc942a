// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// fraMain(6), Company Info: the nine company fields txtCompanyDetails(0..8).
// They are part of the database: an edit goes into Database::company and
// counts as a change, except while the fields are filled from the database.
#include "database/database.h"
#include "shell/panel.h"

#include <array>

class QLineEdit;

namespace qor {

class CompanyInfoPanel : public Panel {
    Q_OBJECT
public:
    explicit CompanyInfoPanel(AppContext &ctx, QWidget *parent = nullptr);

    // The fields from Database::company, filled in the order the file reader
    // fills them (0-4, 6, 7, 5, 8) with IsReadingCompanyInfo set, so that the
    // fills are no change.
    void readCompanyInfo();
    // Empties all nine fields as an edit would: each field that had text
    // counts as a change (the clearing before a database is read).
    void clearCompanyInfo();
    bool isReadingCompanyInfo() const { return m_isReadingCompanyInfo; }

    QString field(int index) const;

private:
    void detailsChanged(int index);
    std::array<QLineEdit *, CompanyFieldCount> m_fields{};  // txtCompanyDetails(0..8)
    bool m_isReadingCompanyInfo = false;
};

}  // namespace qor
