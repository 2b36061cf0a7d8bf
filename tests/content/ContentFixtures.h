#pragma once

#include "Diagnostics.h"

#include <QFile>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <vector>

namespace tarvolin::levels::test {

inline QString dataDir() {
    return QStringLiteral(TARVOLIN_LEVELS_DATA);
}

inline QString dataFile(const QString& name) {
    return dataDir() + QLatin1Char('/') + name;
}

inline QString readAll(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

inline bool writeAll(const QString& path, const QString& text) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0;
}

// A finding that a test expects: its line, its kind and a piece of its message.
struct Expected {
    int line;
    Severity severity;
    QString text;
};

inline QString describe(const std::vector<Diagnostic>& all) {
    QString out;
    for (const Diagnostic& d : all)
        out += QStringLiteral("\n  ") + d.toString();
    return out.isEmpty() ? QStringLiteral(" (none)") : out;
}

// The report holds exactly the expected findings, each matched once, and nothing else.
inline void expectFindings(const Report& report, const std::vector<Expected>& expected) {
    std::vector<Diagnostic> left = report.all();
    for (const Expected& e : expected) {
        auto it = std::find_if(left.begin(), left.end(), [&](const Diagnostic& d) {
            return d.line == e.line && d.severity == e.severity && d.message.contains(e.text);
        });
        EXPECT_TRUE(it != left.end())
            << "missing: line " << e.line << " " << (e.severity == Severity::Error ? "error" : "warning")
            << " containing \"" << e.text.toStdString()
            << "\"; found:" << describe(report.all()).toStdString();
        if (it != left.end())
            left.erase(it);
    }
    EXPECT_TRUE(left.empty()) << "unexpected:" << describe(left).toStdString();
}

} // namespace tarvolin::levels::test
