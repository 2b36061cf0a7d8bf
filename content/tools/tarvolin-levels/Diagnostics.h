#pragma once

#include <QString>

#include <vector>

namespace tarvolin::levels {

enum class Severity { Warning, Error };

// One finding of the checker, shown as "FILE:LINE: error: message". Line 0 means the file as a whole.
struct Diagnostic {
    QString file;
    int line = 0;
    Severity severity = Severity::Error;
    QString message;

    QString toString() const;
};

class Report {
public:
    void error(const QString& file, int line, const QString& message);
    void warning(const QString& file, int line, const QString& message);

    int errorCount() const;
    int warningCount() const;
    bool fitToShip() const { return errorCount() == 0; }

    // The findings ordered by file, then line, errors first on a line; the order of finding otherwise.
    std::vector<Diagnostic> sorted() const;
    const std::vector<Diagnostic>& all() const { return m_diagnostics; }

private:
    std::vector<Diagnostic> m_diagnostics;
};

// Reads a text file that must be UTF-8. False, with the reason reported under the file's name, when it
// cannot be read or is not valid UTF-8.
bool readUtf8(const QString& path, QString& text, Report& report);

} // namespace tarvolin::levels
