// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The captions by which the entry panels show what their buttons do now.
// The roster starts the controls with them and the panels' editors pick
// them by mode, so each is spelt once. Plain character arrays: the roster's
// rows are compile-time data, and QString takes them as UTF-8.

namespace qor::captions {

// Customers
inline constexpr char NewCustomer[] = "&New Customer";
inline constexpr char ApplyEdit[] = "Apply &Edit";
inline constexpr char UndoEdit[] = "&Undo Edit";
inline constexpr char ListOfCustomers[] = "List of Customers:";
inline constexpr char Search[] = "Search:";

// Products and services
inline constexpr char NewProductOrService[] = "&New Product or Service";

// Bill periods
inline constexpr char NewBillPeriod[] = "&New Bill Period";
inline constexpr char LogFullPayment[] = "&Log Full Payment";
inline constexpr char ResetCustomerAccounts[] = "&Reset Customer Accounts";
inline constexpr char NameInEntry[] = "Bill Period Name:";
inline constexpr char NameInView[] = "Bill Period:";

// Shared by all three
inline constexpr char AddNew[] = "&Add New";
inline constexpr char CancelNew[] = "&Cancel New";
inline constexpr char DeleteExisting[] = "&Delete Existing";

}  // namespace qor::captions
