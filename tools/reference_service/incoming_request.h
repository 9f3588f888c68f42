#pragma once

#include "tools/reference_service/form_data.h"

#include <QByteArray>
#include <QStringList>

#include <string>
#include <utility>
#include <vector>

namespace ReferenceService {

// One HTTP request as the handlers see it, independent of the HTTP library.
struct IncomingRequest
{
    std::string method;
    // The request target exactly as sent (path and query).
    std::string target;
    // Decoded path segments without the leading empty one; see UrlText::SplitPath.
    QStringList segments;
    // False when the path could not be decoded safely; such a request is refused.
    bool pathIsValid = true;
    FormData query;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    // Position of this request in the request log, or -1 when it is not logged.
    int logIndex = -1;

    static IncomingRequest FromTarget(const std::string& method, const std::string& target);

    bool HasHeader(const std::string& name) const;
    // First value of a header, compared without regard to case; empty when absent.
    std::string Header(const std::string& name) const;
    QByteArray Body() const;
    // Whether the Content-Type names this media type (parameters such as the
    // charset are not compared).
    bool ContentTypeIs(const std::string& mediaType) const;
    // The body read as an "application/x-www-form-urlencoded" form.
    FormData Form() const;
};

} // namespace ReferenceService
