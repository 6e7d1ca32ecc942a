// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Test setups that need rows no edit of the program makes (a raw text, a
// given key, a damaged row) write them into plain tables, which the database
// takes back whole through its bulk load when the edit ends, as after a read.
#include "database/database.h"

#include <utility>

namespace qor::test {

class TablesEdit : public Tables {
public:
    explicit TablesEdit(Database &db) : Tables(db.release()), m_db(&db) {}
    ~TablesEdit() { done(); }
    TablesEdit(const TablesEdit &) = delete;
    TablesEdit &operator=(const TablesEdit &) = delete;
    // Hands the tables back now rather than at the end of the scope.
    void done()
    {
        if (m_db) m_db->load(std::move(static_cast<Tables &>(*this)));
        m_db = nullptr;
    }

private:
    Database *m_db;
};

}  // namespace qor::test
