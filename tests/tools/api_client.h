#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

namespace Tests {

// A plain blocking HTTP client for the reference service's own tests: it sends
// exactly the target, headers and body it is given (no encoding, no added
// content type), so the tests decide every byte the service sees.
class ApiClient
{
public:
    using Headers = QList<QPair<QByteArray, QByteArray>>;

    struct Answer
    {
        // False when no complete reply arrived; `error` says why.
        bool complete = false;
        QString error;
        int status = 0;
        QByteArray contentType;
        QByteArray body;

        QJsonObject Json() const;
    };

    // `origin` is "http://127.0.0.1:PORT/".
    explicit ApiClient(const QString& origin);

    static constexpr const char* Json = "application/json";
    static constexpr const char* Form = "application/x-www-form-urlencoded";

    Answer Get(const QString& target, const Headers& headers = Headers()) const;
    Answer Post(const QString& target, const QByteArray& body, const QByteArray& contentType = Json,
                const Headers& headers = Headers()) const;

    // Signs in as the player does and returns the token; empty on any failure.
    QString SignIn(const QString& login, const QString& password, const QString& code) const;
    static Headers Token(const QString& token);

private:
    QString origin;
};

} // namespace Tests
