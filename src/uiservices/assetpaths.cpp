// SPDX-License-Identifier: GPL-3.0-or-later
#include "uiservices/assetpaths.h"

#include <QtCore/qglobal.h>

static void registerAssetResources() { Q_INIT_RESOURCE(assets); }

namespace qor::assets {

void ensureLoaded()
{
    static const bool done = (registerAssetResources(), true);
    Q_UNUSED(done);
}

// Registered as soon as this object is linked in.
static const bool registeredAtStart = (ensureLoaded(), true);

}  // namespace qor::assets
