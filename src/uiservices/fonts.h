#pragma once
// The window is designed around Tahoma and Arial. Debian ships a
// metric-compatible Tahoma with Wine's fonts (fonts-wine) outside fontconfig's
// folders, so it is registered with the application here; Arial is aliased to
// Liberation Sans by fontconfig itself.
namespace qor {
// Safe to call more than once; needs a QGuiApplication.
void ensureDesignFonts();
}
