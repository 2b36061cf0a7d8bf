#include "GameAdditions.h"

#include <QString>

QList<QVariantList> GameAdditions::getGameAchievementsData() {
    const auto row = [](qint64 gold, const char* calc, const QString& text) {
        return QVariantList{gold, QString::fromLatin1(calc), text};
    };
    return {
        row(50, "days:1", QStringLiteral("افتح اللعبة للمرة الأولى")),
        row(100, "days:5", QStringLiteral("افتح اللعبة في 5 أيام مختلفة")),
        row(150, "days:10", QStringLiteral("افتح اللعبة في 10 أيام مختلفة")),
        row(200, "days:20", QStringLiteral("افتح اللعبة في 20 يوم مختلف")),
        row(300, "days:30", QStringLiteral("افتح اللعبة في 30 يوم مختلف")),
        row(400, "days:60", QStringLiteral("افتح اللعبة في 60 يوم مختلف")),
        row(600, "days:90", QStringLiteral("افتح اللعبة في 90 يوم مختلف")),
        row(200, "share", QStringLiteral("شارك اللعبة مع أصدقائك")),
        row(300, "rate", QStringLiteral("قيم اللعبة على الأب ستور")),
        row(300, "ourgames", QStringLiteral("حمل احد العابنا الاخرى")),
        row(50, "rank:2", QStringLiteral("قم بإنهاء المجموعة 2")),
        row(100, "rank:3", QStringLiteral("قم بإنهاء المجموعة 4")),
        row(100, "rank:4", QStringLiteral("قم بإنهاء المجموعة 6")),
        row(150, "rank:6", QStringLiteral("قم بإنهاء المجموعة 9")),
        row(200, "rank:8", QStringLiteral("قم بإنهاء المجموعة 12")),
        row(300, "rank:10", QStringLiteral("قم بإنهاء المجموعة 15")),
        row(50, "gc:5000", QStringLiteral("كن ضمن أفضل 5000 لاعب في الجيم سنتر")),
        row(100, "gc:2000", QStringLiteral("كن ضمن أفضل 2000 لاعب في الجيم سنتر")),
        row(100, "gc:1000", QStringLiteral("كن ضمن أفضل 1000 لاعب في الجيم سنتر")),
        row(150, "gc:500", QStringLiteral("ادخل قائمة أفضل 500 لاعب في الجيم سنتر")),
        row(200, "gc:200", QStringLiteral("ادخل قائمة أفضل 200 لاعب في الجيم سنتر")),
        row(300, "gc:100", QStringLiteral("ادخل قائمة أفضل 100 لاعب في الجيم سنتر")),
        row(400, "gc:50", QStringLiteral("ادخل قائمة أفضل 50 لاعب في الجيم سنتر")),
        row(500, "gc:10", QStringLiteral("ادخل قائمة أفضل 10 لاعبين في الجيم سنتر")),
        row(800, "gc:5", QStringLiteral("ادخل قائمة أفضل 5 لاعبين في الجيم سنتر")),
        row(1000, "gc:1", QStringLiteral("كن اللاعب رقم واحد في الجيم سنتر")),
        row(50, "shareLevel:1", QStringLiteral("استعن بأصدقائك اول مرة")),
        row(100, "shareLevel:6", QStringLiteral("استعن بأصدقائك 6 مرات")),
        row(100, "shareLevel:10", QStringLiteral("استعن بأصدقائك 10 مرات")),
        row(150, "shareLevel:20", QStringLiteral("استعن بأصدقائك 20 مرة")),
        row(200, "shareLevel:30", QStringLiteral("استعن بأصدقائك 30 مرة")),
        row(250, "shareLevel:50", QStringLiteral("استعن بأصدقائك 50 مرة")),
        row(300, "shareLevel:75", QStringLiteral("استعن بأصدقائك 75 مرة")),
        row(400, "shareLevel:100", QStringLiteral("استعن بأصدقائك 100 مرة")),
        row(600, "shareLevel:150", QStringLiteral("استعن بأصدقائك 150 مرة")),
        row(50, "levels:25", QStringLiteral("أكمل بنجاح 25 مرحلة بيوم واحد")),
        row(100, "levels:50", QStringLiteral("أكمل بنجاح 50 مرحلة بيوم واحد")),
        row(150, "levels:75", QStringLiteral("أكمل بنجاح 75 مرحلة بيوم واحد")),
        row(200, "levels:100", QStringLiteral("أكمل بنجاح 100 مرحلة بيوم واحد")),
        row(300, "levels:150", QStringLiteral("أكمل بنجاح 150 مرحلة بيوم واحد")),
        row(500, "levels:200", QStringLiteral("أكمل بنجاح 200 مرحلة بيوم واحد")),
    };
}

QStringList GameAdditions::getGameAdditionalTips() {
    return {QStringLiteral("الان يمكنك لعب المراحل السابقة التي أنجزتها لكسب مزيد من النقاط")};
}
