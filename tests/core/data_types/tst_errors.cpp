#include "core/data_types/api_error.h"
#include "core/data_types/error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/data_types/network_error.h"

#include <QtTest>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace Core::DataTypes;

namespace {

// The six yes/no questions in slot order.
std::vector<bool> Answers(const Error& error)
{
    return {error.IsWrongTokenError(),
            error.IsNoCertificateError(),
            error.IsAccountIsBlockedError(),
            error.IsPlayerControlDisabledError(),
            error.IsCurrentIntervalNotFoundError(),
            error.IsObjectExportedError()};
}

} // namespace

Q_DECLARE_METATYPE(std::shared_ptr<Error>)

class ErrorsTest : public QObject
{
    Q_OBJECT

private slots:
    void eachApiCodeAnswersExactlyOnePredicate_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("predicate");
        QTest::newRow("wrong token") << 403010 << 0;
        QTest::newRow("no certificate") << 403008 << 1;
        QTest::newRow("account blocked") << 403003 << 2;
        QTest::newRow("player control disabled") << 403001 << 3;
        QTest::newRow("current interval not found") << 404007 << 4;
        QTest::newRow("object exported") << 403013 << 5;
    }

    void eachApiCodeAnswersExactlyOnePredicate()
    {
        QFETCH(int, code);
        QFETCH(int, predicate);
        // Held as the base types callers use: the answers must survive the upcast.
        const std::shared_ptr<NetworkError> asNetwork = std::make_shared<ApiError>("текст", code);
        const std::shared_ptr<Error> asError = asNetwork;
        std::vector<bool> expected(6, false);
        expected[static_cast<std::size_t>(predicate)] = true;
        QCOMPARE(Answers(*asNetwork), expected);
        QCOMPARE(Answers(*asError), expected);
    }

    void unknownOrMissingCodeAnswersNothing()
    {
        const std::vector<bool> none(6, false);
        QCOMPARE(Answers(ApiError()), none);
        QCOMPARE(Answers(ApiError("Неверный токен авторизации", 403011)), none);
        // The same text without the code is not the condition.
        QCOMPARE(Answers(NetworkError("Неверный токен авторизации")), none);
        QCOMPARE(Answers(JsonDeserializationError("403010")), none);
        QCOMPARE(Answers(*Error::CreateDataBaseError()), none);
    }

    void toStringPrefixesTheMessage_data()
    {
        QTest::addColumn<std::shared_ptr<Error>>("error");
        QTest::addColumn<QString>("expected");
        QTest::newRow("error") << std::make_shared<Error>("сбой") << "Error: сбой";
        QTest::newRow("network") << std::shared_ptr<Error>(std::make_shared<NetworkError>("сбой"))
                                 << "Network error: сбой";
        QTest::newRow("api, code not printed")
            << std::shared_ptr<Error>(std::make_shared<ApiError>("Аккаунт заблокирован", 403003))
            << "Ошибка: Аккаунт заблокирован";
        QTest::newRow("api, empty message")
            << std::shared_ptr<Error>(std::make_shared<ApiError>()) << "Ошибка: ";
        QTest::newRow("json") << std::shared_ptr<Error>(std::make_shared<JsonDeserializationError>("bad"))
                              << "Json Deserialization error: bad";
        QTest::newRow("database") << Error::CreateDataBaseError()
                                  << "Error: Ошибка чтения/записи базы данных";
        QTest::newRow("read file") << Error::CreateReadFileError() << "Error: Ошибка чтения файла";
    }

    void toStringPrefixesTheMessage()
    {
        QFETCH(std::shared_ptr<Error>, error);
        QFETCH(QString, expected);
        QCOMPARE(QString::fromStdString(error->ToString()), expected);
    }
};

QTEST_GUILESS_MAIN(ErrorsTest)
#include "tst_errors.moc"
