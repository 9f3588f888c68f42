#include "tools/reference_service/incoming_request.h"

#include "tools/reference_service/url_text.h"

#include <algorithm>
#include <cctype>

namespace ReferenceService {

namespace {

bool EqualIgnoringCase(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

} // namespace

IncomingRequest IncomingRequest::FromTarget(const std::string& method, const std::string& target)
{
    IncomingRequest request;
    request.method = method;
    request.target = target;
    const QByteArray raw = QByteArray::fromStdString(target);
    const int question = raw.indexOf('?');
    const QByteArray path = question < 0 ? raw : raw.left(question);
    request.pathIsValid = UrlText::SplitPath(path, &request.segments);
    if (question >= 0) {
        request.query = FormData(raw.mid(question + 1));
    }
    return request;
}

bool IncomingRequest::HasHeader(const std::string& name) const
{
    return std::any_of(headers.begin(), headers.end(),
                       [&name](const auto& header) { return EqualIgnoringCase(header.first, name); });
}

std::string IncomingRequest::Header(const std::string& name) const
{
    for (const auto& header : headers) {
        if (EqualIgnoringCase(header.first, name)) {
            return header.second;
        }
    }
    return std::string();
}

QByteArray IncomingRequest::Body() const
{
    return QByteArray::fromStdString(body);
}

bool IncomingRequest::ContentTypeIs(const std::string& mediaType) const
{
    std::string value = Header("Content-Type");
    const auto semicolon = value.find(';');
    if (semicolon != std::string::npos) {
        value.resize(semicolon);
    }
    while (!value.empty() && value.back() == ' ') {
        value.pop_back();
    }
    return EqualIgnoringCase(value, mediaType);
}

FormData IncomingRequest::Form() const
{
    return FormData(Body());
}

} // namespace ReferenceService
