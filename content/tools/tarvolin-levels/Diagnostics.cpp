#include "Diagnostics.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>

namespace tarvolin::levels {

QString Diagnostic::toString() const {
    const QString kind = severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
    if (line <= 0)
        return QStringLiteral("%1: %2: %3").arg(file, kind, message);
    return QStringLiteral("%1:%2: %3: %4").arg(file).arg(line).arg(kind, message);
}

void Report::error(const QString& file, int line, const QString& message) {
    m_diagnostics.push_back({file, line, Severity::Error, message});
}

void Report::warning(const QString& file, int line, const QString& message) {
    m_diagnostics.push_back({file, line, Severity::Warning, message});
}

int Report::errorCount() const {
    return static_cast<int>(std::count_if(m_diagnostics.begin(), m_diagnostics.end(),
                                          [](const Diagnostic& d) { return d.severity == Severity::Error; }));
}

int Report::warningCount() const {
    return static_cast<int>(m_diagnostics.size()) - errorCount();
}

std::vector<Diagnostic> Report::sorted() const {
    std::vector<Diagnostic> out = m_diagnostics;
    std::stable_sort(out.begin(), out.end(), [](const Diagnostic& a, const Diagnostic& b) {
        if (a.file != b.file)
            return a.file < b.file;
        if (a.line != b.line)
            return a.line < b.line;
        return a.severity == Severity::Error && b.severity == Severity::Warning;
    });
    return out;
}

bool readUtf8(const QString& path, QString& text, Report& report) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        report.error(path, 0, QStringLiteral("cannot read the file: %1").arg(file.errorString()));
        return false;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    text = decoder.decode(file.readAll());
    if (decoder.hasError()) {
        report.error(path, 0, QStringLiteral("the file is not valid UTF-8"));
        return false;
    }
    return true;
}

} // namespace tarvolin::levels
