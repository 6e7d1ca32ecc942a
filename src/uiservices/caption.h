// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// Captions carry hot keys: a single "&" marks the letter and isn't shown,
// "&&" shows one ampersand.
#include <QString>
#include <QStringView>

namespace qor {

inline QString captionAsShown(QStringView caption)
{
    QString out;
    out.reserve(caption.size());
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] == u'&') {
            if (i + 1 < caption.size() && caption[i + 1] == u'&') {
                out += u'&';
                ++i;
            }
            continue;
        }
        out += caption[i];
    }
    return out;
}

}  // namespace qor
