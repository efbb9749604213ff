#pragma once
// Errors of the core: Fehler inside a subsystem, Ergebnis at its public entry points.

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace flurix {

/// Work cannot go on (file missing, database error, malformed input). The message is German and
/// names the file and the place. Thrown inside a subsystem, never across one.
class Fehler : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Outcome of a subsystem's public entry point (what the GUI and the CLI call).
/// Starts in the failed state, like a parse result: only Ok() makes it true.
class Ergebnis {
public:
    enum class Status {
        Ok,          ///< the work is done
        Fehler,      ///< the work failed; Meldung() tells why (already shown through the UI port)
        Abgebrochen, ///< the user said no or cancelled; nothing was changed
        Beenden,     ///< the process must end (start-up could not go on)
    };

    Ergebnis() = default;
    static Ergebnis Ok(std::string meldung = {}) { return {Status::Ok, std::move(meldung)}; }
    static Ergebnis Fehlschlag(std::string meldung) { return {Status::Fehler, std::move(meldung)}; }
    static Ergebnis Abbruch(std::string meldung = {}) { return {Status::Abgebrochen, std::move(meldung)}; }
    static Ergebnis Ende(std::string meldung) { return {Status::Beenden, std::move(meldung)}; }

    Status status() const { return m_status; }
    const std::string& Meldung() const { return m_meldung; }
    explicit operator bool() const { return m_status == Status::Ok; }

private:
    Ergebnis(Status status, std::string meldung) : m_status(status), m_meldung(std::move(meldung)) {}

    Status m_status = Status::Fehler;
    std::string m_meldung;
};

/// The message for a part this version does not have yet.
inline std::string NochNichtVerfügbar(std::string_view was) {
    return std::string(was) + " ist in dieser Version von Flurix noch nicht verfügbar!   ";
}

} // namespace flurix
