#pragma once
// Logins of WMS services that need one. Each lives in a file of the config folder named after the
// service: the text "user|password|owner|" scrambled with Verschleiern and the key
// "owner|" + ZugangKonstante. The owner is the account the installation runs under; a file written
// by another account is refused, so that a config folder copied to another person does not hand
// on a login. Scrambling is not encryption: it keeps the login from being read at a glance.

#include "core/fehler.hpp"
#include "map/http.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace flurix {
class Oberfläche;
}

namespace flurix::karte {

class Dienstkatalog;

/// The fixed part of the key. Every login file ever written depends on it: never change it.
inline constexpr std::string_view ZugangKonstante = "Flurix-Kartendienst";

/// The message of a refused login and its title.
inline constexpr std::string_view ZugangVerweigert =
    "Web-Service Sicherheitsabfrage ohne gültige Anmeldung! Abbruch!";
inline constexpr std::string_view ZugangTitel = "WMS-Service";

/// The account the program runs under (the login name of the effective user; $USER when the
/// system has no name for it).
std::string Besitzer();

/// The login file's name: the service name + ".key", without any of \ / : ? * ^ " < > | and
/// without blanks.
std::string ZugangDateiname(std::string_view dienst);

/// The bytes of a login file for `benutzer`, `passwort` and `besitzer`.
std::string ZugangVerschleiern(std::string_view benutzer, std::string_view passwort,
                               std::string_view besitzer);

struct Zugangsdaten {
    std::string benutzer;
    std::string passwort;
};

/// Unscrambles the bytes of a login file with the key of `besitzer`. std::nullopt when the owner
/// field is not `besitzer` (a file of another account, or not a login file at all).
std::optional<Zugangsdaten> ZugangEntschlüsseln(std::string_view inhalt, std::string_view besitzer);

/// What a refused or missing login file says: the catalogue window and the capabilities reader
/// always the security message; the map says for a missing file "Prüfen Sie bitte Ihre
/// Zugangsdaten für WMS-Service: " + the service's name.
enum class Zugangszweck { Katalog, Karte };

/// The login for a request to the service of row `zeile`:
/// - `Zugang` off: options without login;
/// - `Zugang` on: the file `ZugangKey` in `konfig`, unscrambled for `besitzer`. A missing file or
///   a foreign owner shows the refusal (title "WMS-Service") and returns std::nullopt: the caller
///   then makes no request for this service.
std::optional<HttpOptionen> ZugangFürZeile(const Dienstkatalog& katalog, std::size_t zeile,
                                           const std::filesystem::path& konfig,
                                           std::string_view besitzer, Oberfläche& ui,
                                           Zugangszweck zweck = Zugangszweck::Katalog);

/// A click on the check `Zugang` of row `zeile`:
/// - off: asks the user name ("Geben Sie bitte Ihren User-Name für diesen Dienst ein!", title
///   "User") and the password ("Geben Sie bitte Ihr Passwort für diesen Dienst ein!", title
///   "Passwort"), sets ZugangKey from the service name, writes the file and turns Zugang on. An
///   empty user name cancels and changes nothing.
/// - on, with the file there: asks "Soll der vorhandene Zugang gelöscht werden?"; Yes deletes the
///   file, empties ZugangKey and turns Zugang off; No leaves all as it is.
/// - on, without the file: turns it off and empties ZugangKey (there is nothing to keep).
/// Messages through `ui`; a file that can't be written gives a failure with its message.
Ergebnis ZugangUmschalten(Dienstkatalog& katalog, std::size_t zeile,
                          const std::filesystem::path& konfig, std::string_view besitzer,
                          Oberfläche& ui);

} // namespace flurix::karte
