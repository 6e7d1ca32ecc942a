// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The one question before an open bill period entry is lost.
//
// While a new period is being entered, what has been billed lives only in the
// entry's tree: no table holds it, and it is not a change of the database
// (Save has nothing to write for it). Any step that empties or replaces the
// books drops it. Every such step calls mayDropEntry() once, after its own
// questions and right before it drops anything, and stops when it gives
// false: quitting, New, Open, Save As, closing the books, abandoning the
// changes. A step added later that reads other books into the window
// (restoring an earlier version, a file handed to the running program) must
// call it in the same place; nothing else asks this question.
class QWidget;

namespace qor {

class InvoiceTrees;

namespace entryguard {

// The buttons of the question: the first keeps the entry, the second drops it.
inline constexpr const char *KeepEntering = "&Keep Entering";
inline constexpr const char *DropTheEntry = "&Drop the Entry";

// True when the step may go on: no entry is open, or the user chose to drop
// it (it is then dropped, and the Bill Periods panel is back in view mode).
// False when the user keeps entering: nothing has changed.
bool mayDropEntry(InvoiceTrees &trees, QWidget *owner);

}  // namespace entryguard
}  // namespace qor
