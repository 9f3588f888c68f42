#include "tests/tools/api_client.h"

#include "tests/support/test_timeouts.h"

#include <QJsonDocument>

#include <httplib.h>

namespace Tests {

namespace {

ApiClient::Answer Send(const QString& origin, const std::function<httplib::Result(httplib::Client&)>& request)
{
    httplib::Client client(origin.toStdString());
    client.set_url_encode(false);
    client.set_decompress(false);
    client.set_connection_timeout(Timeouts::Process / 1000, 0);
    client.set_read_timeout(Timeouts::Process / 1000, 0);
    const httplib::Result result = request(client);
    ApiClient::Answer answer;
    if (!result) {
        answer.error = QString::fromStdString(httplib::to_string(result.error()));
        return answer;
    }
    answer.complete = true;
    answer.status = result->status;
    answer.contentType = QByteArray::fromStdString(result->get_header_value("Content-Type"));
    answer.body = QByteArray::fromStdString(result->body);
    return answer;
}

httplib::Headers ToHeaders(const ApiClient::Headers& headers)
{
    httplib::Headers converted;
    for (const auto& header : headers) {
        converted.emplace(header.first.toStdString(), header.second.toStdString());
    }
    return converted;
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

ApiClient::Answer ApiClient::Get(const QString& target, const Headers& headers) const
{
    return Send(origin, [&](httplib::Client& client) {
        return client.Get(target.toStdString(), ToHeaders(headers));
    });
}

ApiClient::Answer ApiClient::Post(const QString& target, const QByteArray& body,
                                  const QByteArray& contentType, const Headers& headers) const
{
    return Send(origin, [&](httplib::Client& client) {
        return client.Post(target.toStdString(), ToHeaders(headers), body.toStdString(),
                           contentType.toStdString());
    });
}

QString ApiClient::SignIn(const QString& login, const QString& password, const QString& code) const
{
    // The player's own text, a blank before "code" included.
    const QByteArray body = "{\"login\":\"" + login.toUtf8() + "\",\"password\":\"" + password.toUtf8() +
                            "\", \"code\":\"" + code.toUtf8() + "\"}";
    const Answer answer = Post(QStringLiteral("/api/v1/auth/sign_in"), body);
    return answer.Json().value(QStringLiteral("token")).toString();
}

ApiClient::Headers ApiClient::Token(const QString& token)
{
    return {{QByteArrayLiteral("token"), token.toUtf8()}};
}

} // namespace Tests
