#include "core/data_types/api_error.h"
#include "core/data_types/error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/data_types/network_error.h"

#include <QtTest>

#include <memory>
#include <set>
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

    // Each family names itself before the message, through the base pointer the
    // event log is given; the server's text is what a person reads, without its code.
    void toStringKeepsTheMessageAndNamesTheFamily()
    {
        const std::vector<std::shared_ptr<Error>> errors{
            std::make_shared<Error>("сбой"), std::make_shared<NetworkError>("сбой"),
            std::make_shared<ApiError>("сбой", 403003), std::make_shared<JsonDeserializationError>("сбой")};
        std::set<std::string> prefixes;
        for (const auto& error : errors) {
            const std::string text = error->ToString();
            QVERIFY2(text.size() > 8 && text.compare(text.size() - 8, 8, "сбой") == 0, text.c_str());
            prefixes.insert(text.substr(0, text.size() - 8));
        }
        QCOMPARE(prefixes.size(), errors.size());
        QCOMPARE(QString::fromStdString(ApiError("Аккаунт заблокирован", 403003).ToString()),
                 QStringLiteral("Ошибка: Аккаунт заблокирован"));
        QVERIFY(!Error::CreateDataBaseError()->message.empty());
        QVERIFY(Error::CreateReadFileError()->message != Error::CreateDataBaseError()->message);
    }
};

QTEST_GUILESS_MAIN(ErrorsTest)
#include "tst_errors.moc"
