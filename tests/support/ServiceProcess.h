// tarvolin-service as a child process on loopback, for the tests and benchmarks that run the game against
// it: started on a free port, which it names in its first log line.
#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

class ServiceProcess {
public:
    ~ServiceProcess() {
        m_process.terminate();
        m_process.waitForFinished(10000);
    }

    // Starts the service on the database; the port it listens on, or 0 when it did not come up in time.
    int start(const QString& binary, const QString& database, const QStringList& extra = {},
              int waitMs = 30000) {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        // Every player of a test comes from 127.0.0.1: the per-address limits of sign-ups and WebSocket
        // handshakes are off unless `extra` sets them again (a later flag wins).
        m_process.start(binary, QStringList{"--address", "127.0.0.1", "--port", "0", "--database", database,
                                            "--log-level", "info", "--signups-per-hour", "0",
                                            "--ws-handshakes-per-minute", "0"} +
                                    extra);
        if (!m_process.waitForStarted(10000)) {
            return 0;
        }
        while (m_port == 0 && m_process.waitForReadyRead(waitMs)) {
            while (m_process.canReadLine()) {
                const QJsonObject line = QJsonDocument::fromJson(m_process.readLine()).object();
                if (line.value("msg").toString() == QLatin1String("listening")) {
                    m_port = line.value("port").toInt();
                }
            }
        }
        return m_port;
    }
    int port() const { return m_port; }
    QProcess& process() { return m_process; }

private:
    QProcess m_process;
    int m_port = 0;
};
