#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

namespace Tests {

// A plain blocking HTTP(S) client for the reference service's own tests: it sends
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
        bool IsJsonObject() const;
    };

    // `origin` is "http://127.0.0.1:PORT/" or the https form.
    explicit ApiClient(const QString& origin);

    // For https: verify the server against this CA file (otherwise no check).
    void SetCaCertificate(const QString& file);

    Answer Get(const QString& target, const Headers& headers = Headers()) const;
    Answer Post(const QString& target, const QByteArray& body, const QByteArray& contentType,
                const Headers& headers = Headers()) const;
    Answer PostForm(const QString& target, const QByteArray& form, const Headers& headers = Headers()) const;
    Answer PostJson(const QString& target, const QByteArray& json, const Headers& headers = Headers()) const;

    // Signs in as the player does and returns the token; empty on any failure.
    QString SignIn(const QString& login, const QString& password, const QString& code) const;
    static Headers Token(const QString& token);

private:
    QString origin;
    QString caCertificate;
};

} // namespace Tests
