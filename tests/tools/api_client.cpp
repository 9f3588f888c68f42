#include "tests/tools/api_client.h"

#include "tests/support/test_timeouts.h"

#include <QJsonDocument>

#include <httplib.h>

namespace Tests {

namespace {

httplib::Headers ToHeaders(const ApiClient::Headers& headers)
{
    httplib::Headers converted;
    for (const auto& header : headers) {
        converted.emplace(header.first.toStdString(), header.second.toStdString());
    }
    return converted;
}

ApiClient::Answer ToAnswer(const httplib::Result& result)
{
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

} // namespace

QJsonObject ApiClient::Answer::Json() const
{
    return QJsonDocument::fromJson(body).object();
}

bool ApiClient::Answer::IsJsonObject() const
{
    return QJsonDocument::fromJson(body).isObject();
}

ApiClient::ApiClient(const QString& serviceOrigin)
    : origin(serviceOrigin.endsWith(QLatin1Char('/')) ? serviceOrigin.chopped(1) : serviceOrigin)
{
}

void ApiClient::SetCaCertificate(const QString& file)
{
    caCertificate = file;
}

namespace {

std::unique_ptr<httplib::Client> MakeClient(const QString& origin, const QString& caCertificate)
{
    auto client = std::make_unique<httplib::Client>(origin.toStdString());
    client->set_url_encode(false);
    client->set_decompress(false);
    client->set_connection_timeout(Timeouts::Process / 1000, 0);
    client->set_read_timeout(Timeouts::Process / 1000, 0);
    if (caCertificate.isEmpty()) {
        client->enable_server_certificate_verification(false);
    } else {
        client->set_ca_cert_path(caCertificate.toStdString());
        client->enable_server_certificate_verification(true);
    }
    return client;
}

} // namespace

ApiClient::Answer ApiClient::Get(const QString& target, const Headers& headers) const
{
    return ToAnswer(MakeClient(origin, caCertificate)->Get(target.toStdString(), ToHeaders(headers)));
}

ApiClient::Answer ApiClient::Post(const QString& target, const QByteArray& body,
                                  const QByteArray& contentType, const Headers& headers) const
{
    return ToAnswer(
        MakeClient(origin, caCertificate)
            ->Post(target.toStdString(), ToHeaders(headers), body.toStdString(), contentType.toStdString()));
}

ApiClient::Answer ApiClient::PostForm(const QString& target, const QByteArray& form,
                                      const Headers& headers) const
{
    return Post(target, form, "application/x-www-form-urlencoded", headers);
}

ApiClient::Answer ApiClient::PostJson(const QString& target, const QByteArray& json,
                                      const Headers& headers) const
{
    return Post(target, json, "application/json", headers);
}

QString ApiClient::SignIn(const QString& login, const QString& password, const QString& code) const
{
    const QByteArray body = "{\"login\":\"" + login.toUtf8() + "\",\"password\":\"" + password.toUtf8() +
                            "\", \"code\":\"" + code.toUtf8() + "\"}";
    const Answer answer = PostJson(QStringLiteral("/api/v1/auth/sign_in"), body);
    return answer.Json().value(QStringLiteral("token")).toString();
}

ApiClient::Headers ApiClient::Token(const QString& token)
{
    return {{QByteArrayLiteral("token"), token.toUtf8()}};
}

} // namespace Tests
