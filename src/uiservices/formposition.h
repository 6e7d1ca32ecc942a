// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Windows come back where the user left them: five values per form under the
// settings section "FormPositions", keyed by the form's objectName.
// Sizes are outer sizes in twips: the client size plus the frame allowance a
// form declares with the dynamic property "qorFrameTwips" (a QSizeF; none by
// default). A form whose minimum and maximum sizes are equal is fixed and
// keeps no size.
class QWidget;

namespace qor {
void restoreFormPosition(QWidget *form);
void saveFormPosition(QWidget *form);

// Outer size in twips and its setter, by the rule above.
double formWidthTwips(const QWidget *form);
double formHeightTwips(const QWidget *form);
void setFormSizeTwips(QWidget *form, double width, double height);
}  // namespace qor
