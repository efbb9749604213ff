#pragma once
// Text and paths between the core and Qt. The core keeps all text in UTF-8, so every QString made
// from core text says so; file names on Linux are bytes, which the desktop keeps in UTF-8 too.

#include <QString>

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix::gui {

/// Core text (UTF-8) as a QString.
inline QString QText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// A QString as core text (UTF-8).
inline std::string Utf8(const QString& text) { return text.toUtf8().toStdString(); }

/// A path as a QString for Qt's file functions and dialogs.
inline QString QPfad(const std::filesystem::path& pfad) { return QString::fromUtf8(pfad.string()); }

/// A path a Qt dialog returned, for the core.
inline std::filesystem::path PfadAus(const QString& pfad) {
    return std::filesystem::path(Utf8(pfad));
}

} // namespace flurix::gui
