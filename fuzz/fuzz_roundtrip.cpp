// SPDX-License-Identifier: GPL-3.0-or-later
// libFuzzer target: every input the reader accepts must make the round trip.
// Built only with -DQOR_FUZZ=ON and clang (see fuzz/run.sh).
#include "roundtrip.h"

#include <QDir>
#include <QLocale>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace {
QTemporaryDir *folder = nullptr;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // Sort prices depend on the locale: one fixed locale for every run.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    folder = new QTemporaryDir(QDir::tempPath() + QStringLiteral("/qor-fuzz-XXXXXX"));
    if (!folder->isValid()) std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString problem = qor::fuzz::checkRoundTrip(bytes, folder->path());
    if (!problem.isEmpty()) {
        std::fprintf(stderr, "round trip broken: %s\n", qPrintable(problem));
        std::abort();
    }
    return 0;
}
