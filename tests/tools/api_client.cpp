#include "tests/tools/api_client.h"

#include "tests/support/test_timeouts.h"

#include <httplib.h>

namespace Tests {

namespace {

using Request = std::function<httplib::Result(httplib::Client&, const httplib::Headers&)>;

ApiClient::Answer Send(const QString& origin, const QString& token, const Request& request)
{
    httplib::Client client(origin.toStdString());
    client.set_url_encode(false);
    client.set_decompress(false);
    client.set_connection_timeout(Timeouts::Process / 1000, 0);
    client.set_read_timeout(Timeouts::Process / 1000, 0);
    httplib::Headers headers;
    if (!token.isEmpty()) {
        headers.emplace("token", token.toStdString());
    }
    const httplib::Result result = request(client, headers);
    ApiClient::Answer answer;
    if (!result) {
        answer.error = QString::fromStdString(httplib::to_string(result.error()));
        return answer;
    }
    answer.complete = true;
    answer.status = result->status;
    answer.contentType = QByteArray::fromStdString(result->get_header_value("Content-Type"));
    answer.date = QByteArray::fromStdString(result->get_header_value("Date"));
    answer.body = QByteArray::fromStdString(result->body);
    return answer;
}

} // namespace

QJsonObject ApiClient::Answer::Json() const
{
    return QJsonDocument::fromJson(body).object();
}

ApiClient::ApiClient(const QString& serviceOrigin)
    : origin(serviceOrigin.endsWith(QLatin1Char('/')) ? serviceOrigin.chopped(1) : serviceOrigin)
{
}

ApiClient::Answer ApiClient::Get(const QString& target, const QString& token) const
{
    return Send(origin, token, [&](httplib::Client& client, const httplib::Headers& headers) {
        return client.Get(target.toStdString(), headers);
    });
}

ApiClient::Answer ApiClient::Post(const QString& target, const QByteArray& body,
                                  const QByteArray& contentType, const QString& token) const
{
    return Send(origin, token, [&](httplib::Client& client, const httplib::Headers& headers) {
        return client.Post(target.toStdString(), headers, body.toStdString(), contentType.toStdString());
    });
}

QString ApiClient::SignIn(const QString& login, const QString& password, const QString& code) const
{
    // The player's own text, a blank before "code" included.
    const QByteArray body = "{\"login\":\"" + login.toUtf8() + "\",\"password\":\"" + password.toUtf8() +
                            "\", \"code\":\"" + code.toUtf8() + "\"}";
    return Post(QStringLiteral("/api/v1/auth/sign_in"), body)
        .Json()
        .value(QStringLiteral("token"))
        .toString();
}

} // namespace Tests
