// Texts of the window: string-table lookups as Qt strings, and the app's own string ids.
#pragma once

#include <QString>

#include <string>

namespace app {

// String ids of the window's own texts.
inline constexpr int kIdsYes = 3450;
inline constexpr int kIdsNo = 3451;
inline constexpr int kIdsClose = 3452;
inline constexpr int kIdsOpenInPlayer = 3453;
inline constexpr int kIdsAboutTitle = 3454;
inline constexpr int kIdsErrorTitle = 3456;
inline constexpr int kIdsProbeFailed = 3457; // takes the file

// The text with that id from the current string table; empty when there is none.
QString Text(int id);
QString ToQt(const std::string &text);
std::string FromQt(const QString &text);
// A file chooser's filter as the models write it ("Name (*.a;*.b)|*.a;*.b|...||") in Qt's form
// ("Name (*.a *.b);;...").
QString QtFileFilter(const std::string &filter);

} // namespace app
