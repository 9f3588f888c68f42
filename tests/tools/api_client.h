#pragma once

namespace Tests {

// A blocking HTTP client that sends exactly the target, body and content type it is
// given (no encoding, no added headers), so the tests decide every byte the service sees.
class ApiClient
{
public:
    struct Answer
    {
        // False when no complete reply arrived; `error` says why.
        bool complete = false;
        QString error;
        int status = 0;
        QByteArray contentType;
        // The "Date" header as sent: what the service's clock read.
        QByteArray date;
        QByteArray body;

        QJsonObject Json() const;
    };

    // `origin` is "http://127.0.0.1:PORT/".
    explicit ApiClient(const QString& origin);

    static constexpr const char* Json = "application/json";
    static constexpr const char* Form = "application/x-www-form-urlencoded";

    // A non-empty `token` goes in the "token" header.
    Answer Get(const QString& target, const QString& token = QString()) const;
    Answer Post(const QString& target, const QByteArray& body, const QByteArray& contentType = Json,
                const QString& token = QString()) const;
    // Signs in as the player does and returns the token; empty on any failure.
    QString SignIn(const QString& login, const QString& password, const QString& code) const;

private:
    QString origin;
};

} // namespace Tests
