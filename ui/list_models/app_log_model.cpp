#include "ui/list_models/app_log_model.h"

#include <QFile>
#include <QTextStream>
#include <QThread>

#include <memory>
#include <utility>

namespace UI::ListModels {

namespace {

QStringList SplitLines(QString text, bool replaceTabs)
{
    if (replaceTabs) {
        text.replace(QLatin1Char('\t'), QLatin1Char(' '));
    }
    return text.split(QLatin1Char('\n'));
}

// The file as it reads line by line: a final line break ends the last line rather
// than starting an empty one.
QStringList ReadLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    QString text = stream.readAll();
    if (text.isEmpty()) {
        return {};
    }
    if (text.endsWith(QLatin1Char('\n'))) {
        text.chop(1);
    }
    return SplitLines(std::move(text), false);
}

} // namespace

AppLogModel::AppLogModel(QObject* parent)
    : QAbstractListModel(parent)
{
}

AppLogModel::~AppLogModel()
{
    for (QThread* reader : findChildren<QThread*>()) {
        reader->wait();
    }
}

void AppLogModel::loadAppLog(const QString& text, bool replaceTabs)
{
    ++mGeneration;
    SetLines(SplitLines(text, replaceTabs));
    SetLoading(false);
}

void AppLogModel::LoadFile(const QString& path)
{
    const int generation = ++mGeneration;
    auto result = std::make_shared<QStringList>();
    QThread* reader = QThread::create([path, result]() { *result = ReadLines(path); });
    reader->setParent(this);
    connect(reader, &QThread::finished, this, [this, reader, result, generation]() {
        reader->deleteLater();
        if (generation != mGeneration) {
            return;
        }
        SetLines(std::move(*result));
        SetLoading(false);
        emit loaded();
    });
    SetLoading(true);
    reader->start();
}

bool AppLogModel::IsLoading() const
{
    return mLoading;
}

void AppLogModel::setFilterText(const QString& text)
{
    if (text == mFilter) {
        return;
    }
    beginResetModel();
    mFilter = text;
    ApplyFilter();
    endResetModel();
}

QString AppLogModel::FilterText() const
{
    return mFilter;
}

int AppLogModel::TotalLineCount() const
{
    return mLines.size();
}

int AppLogModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid()) {
        return 0;
    }
    return mFilter.isEmpty() ? mLines.size() : mShown.size();
}

QVariant AppLogModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid)) {
        return {};
    }
    if (role != Qt::DisplayRole && role != LineRole) {
        return {};
    }
    const int line = mFilter.isEmpty() ? index.row() : mShown.at(index.row());
    return mLines.at(line);
}

QHash<int, QByteArray> AppLogModel::roleNames() const
{
    return {{LineRole, "line"}};
}

void AppLogModel::SetLines(QStringList lines)
{
    beginResetModel();
    mLines = std::move(lines);
    ApplyFilter();
    endResetModel();
}

void AppLogModel::ApplyFilter()
{
    mShown.clear();
    if (mFilter.isEmpty()) {
        return;
    }
    for (int line = 0; line < mLines.size(); ++line) {
        if (mLines.at(line).contains(mFilter, Qt::CaseInsensitive)) {
            mShown.append(line);
        }
    }
}

void AppLogModel::SetLoading(bool loading)
{
    if (loading != mLoading) {
        mLoading = loading;
        emit loadingChanged();
    }
}

} // namespace UI::ListModels
