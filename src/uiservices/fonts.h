// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// The window is designed around Tahoma and Arial. Where the system lacks
// them, Liberation Sans (Debian's fonts-liberation) stands in for both.
namespace qor {
// Safe to call more than once; needs a QGuiApplication.
void ensureDesignFonts();
}  // namespace qor
