// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Every key the program keeps in the settings store, and one typed object per
// key. The table below is the only list of sections, keys and defaults; each
// object names its row and is checked against it when the program is built,
// so a key that is renamed, dropped or read with the wrong type doesn't build.
#include <QString>

#include <array>
#include <cstddef>
#include <string_view>

namespace qor::settings {

// How a stored Boolean is read when the key is absent.
enum class ReadRule {
    Plain,       // free text or number, no Boolean reading
    TrueCheck,   // on only when the value in lower case is "true": absent means off
    FalseCheck,  // on unless the value in lower case is "false": absent means on
};

struct KeyInfo {
    const char *section;
    const char *key;
    const char *defaultValue;  // nullptr when the default is worked out elsewhere
    ReadRule rule;
    bool writtenBack;  // the default is written back when the key is read absent
    // Numbers with a valid range: a value outside [low, high] counts as
    // outOfRange (not written back). low > high means no range.
    int low = 1;
    int high = 0;
    const char *outOfRange = nullptr;
    // GetStoredSetting keeps the case of this key's text ("KeepCaps").
    bool keepCaps = false;
    // The key is a suffix under a form's name (FormPositions).
    bool perForm = false;
};

namespace detail {
using R = ReadRule;
// Indexes of panels, title options and preview templates only ever come from
// the program itself; one edited by hand to a value with no control behind
// it reads as the default instead.
inline constexpr KeyInfo kKeys[] = {
    // section, key, default, read rule, written back when absent, range...
    {"Settings", "CheckToConfirmEdits", "True", R::FalseCheck, false},
    {"Settings", "ExpertMode", "False", R::TrueCheck, false},
    {"Settings", "LastClicked", "0", R::Plain, true, 0, 6, "0"},
    {"Settings", "InvoiceTitleOption", "0", R::Plain, true, 0, 2, "0"},
    {"Settings", "InvoiceTitleText", "", R::Plain, false, 1, 0, nullptr, true},
    {"Settings", "InvoiceTitleSize", "2", R::Plain, true, 0, 2, "2"},
    {"FileHandling", "DatabasePath", nullptr, R::Plain, false},
    // Earlier versions kept by each save: the newest so many, one a day for
    // so many days, and all of them within so many megabytes.
    {"FileHandling", "VersionsKept", "20", R::Plain, false, 1, 10000, "20"},
    {"FileHandling", "VersionsDays", "60", R::Plain, false, 0, 36500, "60"},
    {"FileHandling", "VersionsMaxMB", "2048", R::Plain, false, 1, 1 << 30, "2048"},
    {"Printing", "AddInvoiceDateToInvoice", "False", R::TrueCheck, false},
    {"Printing", "PrintDuplicateInvoices", "False", R::TrueCheck, false},
    {"Printing", "KeepTwelveLines", "True", R::FalseCheck, false},
    {"Printing", "MoveBottomTextAccordingly", "False", R::TrueCheck, false},
    {"Printing", "PrintPreviewSelected", "0", R::Plain, false, 0, 2, "0"},
    {"Printing", "X-Margin", "2", R::Plain, true},
    {"Printing", "Y-Margin", "12", R::Plain, true},
    // The Statements window: reminders after so many days, the letter (its
    // default lives with the statements), one PDF per customer or one for all.
    {"Printing", "ReminderDays", "14", R::Plain, false, 1, 9999, "14"},
    {"Printing", "ReminderText", nullptr, R::Plain, false, 1, 0, nullptr, true},
    {"Printing", "StatementsOneFilePerCustomer", "False", R::TrueCheck, false},
    {"BrowseRecall", "view", "lvwpeek", R::Plain, false},
    {"BrowseRecall", "LastViewedCustomer", "1", R::Plain, false},
    {"Messages", "DontShowExplanationOfClosingBooks", "False", R::TrueCheck, false},
    {"Messages", "DontShowNeedToFillCompanyInfo", "False", R::TrueCheck, false},
    {"Messages", "DeletedCustomer", "False", R::TrueCheck, false},
    {"FormPositions", "_WindowState", "0", R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Left", "-999", R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Top", "-999", R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Width", nullptr, R::Plain, false, 1, 0, nullptr, false, true},
    {"FormPositions", "_Height", nullptr, R::Plain, false, 1, 0, nullptr, false, true},
    {"CustomerListPrint", "PageTitle", "Customer List", R::Plain, false},
    {"CustomerListPrint", "Columns", "3", R::Plain, false, 1, 4, "3"},
    {"CustomerListPrint", "BlankLinesBetween", "1", R::Plain, true, 0, 4, "1"},
    {"CustomerListPrint", "PrintAddress", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintEmail", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintPhone", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintNotes", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintPageNumbers", "True", R::FalseCheck, false},
    {"CustomerListPrint", "PrintFontName", "Arial", R::Plain, false},
    {"CustomerListPrint", "PrintFontStyleSize", "Regular 8", R::Plain, false},
    // The e-mail account (the password is kept in the keyring, never here)
    // and the texts of the messages; SmtpPort's default follows Security.
    {"EMail", "SmtpServer", "", R::Plain, false},
    {"EMail", "SmtpPort", nullptr, R::Plain, false, 1, 65535},
    {"EMail", "Security", "SSL/TLS", R::Plain, false},
    {"EMail", "UserName", "", R::Plain, false},
    {"EMail", "SenderName", "", R::Plain, false},
    {"EMail", "SenderAddress", "", R::Plain, false},
    {"EMail", "ReplyTo", "", R::Plain, false},
    {"EMail", "SendMeACopy", "False", R::TrueCheck, false},
    {"EMail", "CAFile", "", R::Plain, false},
    {"EMail", "InvoiceSubject", "Invoice {period} from {company}", R::Plain, false},
    {"EMail", "InvoiceBody",
     "Dear {customer},\n\nplease find attached our invoice for {period}. The amount of {amount} is due by "
     "{due date}.\n\nThank you for your business.\n\n{company}\n",
     R::Plain, false},
    {"EMail", "StatementSubject", "Statement of account from {company}", R::Plain, false},
    {"EMail", "StatementBody",
     "Dear {customer},\n\nplease find attached your statement of account as of {period}. The balance is "
     "{amount}.\n\nKind regards,\n\n{company}\n",
     R::Plain, false},
    {"EMail", "ReminderSubject", "Payment reminder from {company}", R::Plain, false},
    {"EMail", "ReminderBody",
     "Dear {customer},\n\nour records show {amount} that was due by {due date} and is still open. The details are "
     "attached. If you have paid in the meantime, please disregard this reminder.\n\nKind regards,\n\n"
     "{company}\n",
     R::Plain, false},
};
inline constexpr int kKeyCount = int(std::size(kKeys));

// The row of section and key; a name the table doesn't hold, or a row of the
// wrong kind, stops the build (a throw can't be evaluated at compile time).
consteval int rowOf(std::string_view section, std::string_view key, int kind)
{
    for (int i = 0; i < kKeyCount; ++i) {
        if (section != kKeys[i].section || key != kKeys[i].key) continue;
        const bool flag = kKeys[i].rule != ReadRule::Plain;
        if ((kind == 1) != flag || (kind == 2) != kKeys[i].perForm) throw "settings key of another kind";
        return i;
    }
    throw "no such settings key";
}
}  // namespace detail

// One key of the table. Every key can be read and written as the text it
// holds; the typed objects below add the reading their table row gives.
class Key {
public:
    constexpr const KeyInfo &info() const { return detail::kKeys[m_row]; }
    constexpr int row() const { return m_row; }
    QString section() const { return QString::fromLatin1(info().section); }
    QString name() const { return QString::fromLatin1(info().key); }
    // The table's default, empty when the table leaves it open.
    QString defaultText() const { return QString::fromUtf8(info().defaultValue); }

    // The text as it stands in the store, a null QString when the key is absent.
    QString stored() const;
    // Stores text as it is.
    void store(const QString &text) const;
    // The text by the table: a stored empty text counts as absent; an absent
    // key gives the table's default (or fallback when the table has none),
    // written back where the table says so. The case of the text is kept.
    QString text(const QString &fallback = {}) const;
    // As GetStoredSetting reads the section "Settings": lower-cased unless the
    // table keeps the key's capitals; an empty or absent key gets the
    // table's default, which is written back.
    QString storedSetting() const;

protected:
    consteval Key(std::string_view section, std::string_view key, int kind = 0)
        : m_row(detail::rowOf(section, key, kind)) {}

private:
    int m_row;
};

// A Boolean, read by its row's TrueCheck or FalseCheck rule.
class Flag : public Key {
public:
    consteval Flag(std::string_view section, std::string_view key) : Key(section, key, 1) {}
    bool isOn() const;
    // Stores "True" or "False", as a check box writes it.
    void set(bool on) const;
};

// A whole number: the leading number of text(), rounded half to even, with
// the row's range rule applied; fallback serves a key whose default the
// table leaves open.
class Number : public Key {
public:
    consteval Number(std::string_view section, std::string_view key) : Key(section, key) {}
    int get(int fallback = 0) const;
    void set(int n) const;
};

// Free text, read by text().
class Text : public Key {
public:
    consteval Text(std::string_view section, std::string_view key) : Key(section, key) {}
    QString get(const QString &fallback = {}) const { return text(fallback); }
    void set(const QString &t) const { store(t); }
};

// A number kept per form, under the form's name followed by the row's key.
class FormKey {
public:
    consteval FormKey(std::string_view suffix) : m_row(detail::rowOf("FormPositions", suffix, 2)) {}
    constexpr const KeyInfo &info() const { return detail::kKeys[m_row]; }
    constexpr int row() const { return m_row; }
    QString name(const QString &form) const { return form + QString::fromLatin1(info().key); }
    QString stored(const QString &form) const;
    int get(const QString &form, int fallback) const;
    void set(const QString &form, const QString &text) const;

private:
    int m_row;
};

inline constexpr Flag CheckToConfirmEdits{"Settings", "CheckToConfirmEdits"};
inline constexpr Flag ExpertMode{"Settings", "ExpertMode"};
inline constexpr Number LastClicked{"Settings", "LastClicked"};
inline constexpr Number InvoiceTitleOption{"Settings", "InvoiceTitleOption"};
inline constexpr Text InvoiceTitleText{"Settings", "InvoiceTitleText"};
inline constexpr Number InvoiceTitleSize{"Settings", "InvoiceTitleSize"};
inline constexpr Text DatabasePath{"FileHandling", "DatabasePath"};
inline constexpr Number VersionsKept{"FileHandling", "VersionsKept"};
inline constexpr Number VersionsDays{"FileHandling", "VersionsDays"};
inline constexpr Number VersionsMaxMB{"FileHandling", "VersionsMaxMB"};
inline constexpr Flag AddInvoiceDateToInvoice{"Printing", "AddInvoiceDateToInvoice"};
inline constexpr Flag PrintDuplicateInvoices{"Printing", "PrintDuplicateInvoices"};
inline constexpr Flag KeepTwelveLines{"Printing", "KeepTwelveLines"};
inline constexpr Flag MoveBottomTextAccordingly{"Printing", "MoveBottomTextAccordingly"};
inline constexpr Number PrintPreviewSelected{"Printing", "PrintPreviewSelected"};
// Centimetres, read by envelopeMarginX() and envelopeMarginY().
inline constexpr Text XMargin{"Printing", "X-Margin"};
inline constexpr Text YMargin{"Printing", "Y-Margin"};
inline constexpr Number ReminderDays{"Printing", "ReminderDays"};
inline constexpr Text ReminderText{"Printing", "ReminderText"};
inline constexpr Flag StatementsOneFilePerCustomer{"Printing", "StatementsOneFilePerCustomer"};
inline constexpr Text BrowseView{"BrowseRecall", "view"};
inline constexpr Number LastViewedCustomer{"BrowseRecall", "LastViewedCustomer"};
inline constexpr Flag DontShowExplanationOfClosingBooks{"Messages", "DontShowExplanationOfClosingBooks"};
inline constexpr Flag DontShowNeedToFillCompanyInfo{"Messages", "DontShowNeedToFillCompanyInfo"};
inline constexpr Flag DeletedCustomer{"Messages", "DeletedCustomer"};
inline constexpr FormKey FormWindowState{"_WindowState"};
inline constexpr FormKey FormLeft{"_Left"};
inline constexpr FormKey FormTop{"_Top"};
inline constexpr FormKey FormWidth{"_Width"};
inline constexpr FormKey FormHeight{"_Height"};
inline constexpr Text PageTitle{"CustomerListPrint", "PageTitle"};
inline constexpr Number Columns{"CustomerListPrint", "Columns"};
inline constexpr Number BlankLinesBetween{"CustomerListPrint", "BlankLinesBetween"};
inline constexpr Flag PrintAddress{"CustomerListPrint", "PrintAddress"};
inline constexpr Flag PrintEmail{"CustomerListPrint", "PrintEmail"};
inline constexpr Flag PrintPhone{"CustomerListPrint", "PrintPhone"};
inline constexpr Flag PrintNotes{"CustomerListPrint", "PrintNotes"};
inline constexpr Flag PrintPageNumbers{"CustomerListPrint", "PrintPageNumbers"};
// chkPCL(0) to chkPCL(4).
inline constexpr std::array<Flag, 5> CustomerListParts{PrintAddress, PrintEmail, PrintPhone, PrintNotes,
                                                       PrintPageNumbers};
inline constexpr Text PrintFontName{"CustomerListPrint", "PrintFontName"};
inline constexpr Text PrintFontStyleSize{"CustomerListPrint", "PrintFontStyleSize"};
inline constexpr Text SmtpServer{"EMail", "SmtpServer"};
inline constexpr Number SmtpPort{"EMail", "SmtpPort"};
inline constexpr Text MailSecurity{"EMail", "Security"};
inline constexpr Text UserName{"EMail", "UserName"};
inline constexpr Text SenderName{"EMail", "SenderName"};
inline constexpr Text SenderAddress{"EMail", "SenderAddress"};
inline constexpr Text ReplyTo{"EMail", "ReplyTo"};
inline constexpr Flag SendMeACopy{"EMail", "SendMeACopy"};
inline constexpr Text CAFile{"EMail", "CAFile"};
// By mail::MailKind: invoice, statement, reminder.
inline constexpr std::array<Text, 3> MailSubject{
    {{"EMail", "InvoiceSubject"}, {"EMail", "StatementSubject"}, {"EMail", "ReminderSubject"}}};
inline constexpr std::array<Text, 3> MailBody{
    {{"EMail", "InvoiceBody"}, {"EMail", "StatementBody"}, {"EMail", "ReminderBody"}}};

namespace detail {
// Each row of the table has exactly one object above.
consteval bool everyRowOnce(std::initializer_list<int> rows)
{
    std::array<int, kKeyCount> seen{};
    for (int r : rows) ++seen[std::size_t(r)];
    for (int n : seen)
        if (n != 1) return false;
    return true;
}
static_assert(everyRowOnce({CheckToConfirmEdits.row(), ExpertMode.row(), LastClicked.row(), InvoiceTitleOption.row(),
                            InvoiceTitleText.row(), InvoiceTitleSize.row(), DatabasePath.row(), VersionsKept.row(),
                            VersionsDays.row(), VersionsMaxMB.row(), AddInvoiceDateToInvoice.row(),
                            PrintDuplicateInvoices.row(), KeepTwelveLines.row(), MoveBottomTextAccordingly.row(),
                            PrintPreviewSelected.row(), XMargin.row(), YMargin.row(), ReminderDays.row(),
                            ReminderText.row(), StatementsOneFilePerCustomer.row(), BrowseView.row(),
                            LastViewedCustomer.row(), DontShowExplanationOfClosingBooks.row(),
                            DontShowNeedToFillCompanyInfo.row(), DeletedCustomer.row(), FormWindowState.row(),
                            FormLeft.row(), FormTop.row(), FormWidth.row(), FormHeight.row(), PageTitle.row(),
                            Columns.row(), BlankLinesBetween.row(), PrintAddress.row(), PrintEmail.row(),
                            PrintPhone.row(), PrintNotes.row(), PrintPageNumbers.row(), PrintFontName.row(), PrintFontStyleSize.row(),
                            SmtpServer.row(), SmtpPort.row(), MailSecurity.row(), UserName.row(), SenderName.row(),
                            SenderAddress.row(), ReplyTo.row(), SendMeACopy.row(), CAFile.row(), MailSubject[0].row(),
                            MailSubject[1].row(), MailSubject[2].row(), MailBody[0].row(), MailBody[1].row(),
                            MailBody[2].row()}),
              "every settings key needs its typed object, and only one");
}  // namespace detail

}  // namespace qor::settings
