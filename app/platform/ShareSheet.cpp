#include "ShareSheet.h"

#include "Platform.h"

#include <QApplication>
#include <QClipboard>
#include <QDebug>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QQuickImageProvider>
#include <QSaveFile>
#include <QStandardPaths>

QString FileChooser::saveFileName(const QString& title, const QString& suggestedPath) {
    // A dialog needs the widgets' application object; without one there is nobody to ask.
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        qInfo("No file dialog can be shown: the picture is not saved");
        return {};
    }
    return QFileDialog::getSaveFileName(nullptr, title, suggestedPath, QStringLiteral("JPEG (*.jpg *.jpeg)"));
}

ShareItems ShareItems::fromList(const QVariantList& items) {
    ShareItems out;
    for (const QVariant& item : items) {
        switch (item.typeId()) {
        case QMetaType::QString:
            if (!item.toString().isEmpty()) {
                out.texts << item.toString();
            }
            break;
        case QMetaType::QUrl:
            out.url = item.toUrl();
            break;
        case QMetaType::QImage:
            out.image = item.value<QImage>();
            break;
        default:
            qWarning() << "A share item of an unknown kind is left out:" << item.typeName();
            break;
        }
    }
    return out;
}

const QList<ShareSheet::TargetInfo>& ShareSheet::allTargets() {
    static const QList<TargetInfo> targets{
        {Target::WhatsApp, UIActivity::TypeWhatsApp, QStringLiteral("واتساب"), QStringLiteral("✆"),
         QStringLiteral("#25d366"), QStringLiteral("#ffffff"),
         QUrl(QStringLiteral("https://web.whatsapp.com/")), false, QStringLiteral("net.whatsapp.image")},
        {Target::Facebook, UIActivity::TypePostToFacebook, QStringLiteral("فيسبوك"), QStringLiteral("f"),
         QStringLiteral("#1877f2"), QStringLiteral("#ffffff"),
         QUrl(QStringLiteral("https://www.facebook.com/")), false, QString()},
        {Target::Twitter, UIActivity::TypePostToTwitter, QStringLiteral("إكس"), QStringLiteral("X"),
         QStringLiteral("#0f1419"), QStringLiteral("#ffffff"), QUrl(QStringLiteral("https://x.com/")), false,
         QString()},
        {Target::Instagram, UIActivity::TypeInstagram, QStringLiteral("إنستغرام"), QStringLiteral("◎"),
         QStringLiteral("#d6249f"), QStringLiteral("#ffffff"),
         QUrl(QStringLiteral("https://www.instagram.com/")), true,
         QStringLiteral("com.instagram.exclusivegram")},
        {Target::Snapchat, UIActivity::TypeSnapchat, QStringLiteral("سناب شات"), QStringLiteral("S"),
         QStringLiteral("#fffc00"), QStringLiteral("#111111"),
         QUrl(QStringLiteral("https://web.snapchat.com/")), true, QStringLiteral("com.snapchat.image")},
        {Target::Telegram, UIActivity::TypeTelegram, QStringLiteral("تيليغرام"), QStringLiteral("➤"),
         QStringLiteral("#229ed9"), QStringLiteral("#ffffff"),
         QUrl(QStringLiteral("https://web.telegram.org/")), false, QString()},
        {Target::Mail, UIActivity::TypeMail, QStringLiteral("البريد"), QStringLiteral("✉"),
         QStringLiteral("#5b6b7f"), QStringLiteral("#ffffff"), QUrl(QStringLiteral("mailto:")), false,
         QString()},
        {Target::CopyLink, UIActivity::TypeCopyToPasteboard, QStringLiteral("نسخ"), QStringLiteral("⧉"),
         QStringLiteral("#8e8e93"), QStringLiteral("#ffffff"), QUrl(), false, QString()},
        {Target::SavePicture, UIActivity::TypeSaveToCameraRoll, QStringLiteral("حفظ الصورة"),
         QStringLiteral("⤓"), QStringLiteral("#f9c32d"), QStringLiteral("#3b2a12"), QUrl(), true, QString()},
    };
    return targets;
}

const ShareSheet::TargetInfo* ShareSheet::info(Target target) {
    for (const TargetInfo& t : allTargets()) {
        if (t.target == target) {
            return &t;
        }
    }
    return nullptr;
}

const ShareSheet::TargetInfo* ShareSheet::infoForActivityType(const QString& activityType) {
    for (const TargetInfo& t : allTargets()) {
        if (t.activityType == activityType) {
            return &t;
        }
    }
    return nullptr;
}

QUrl ShareSheet::shareAddress(Target target, const QString& text, const QUrl& link) {
    const TargetInfo* t = info(target);
    const QString linkText = link.toString(QUrl::FullyEncoded);
    const QString both = linkText.isEmpty() ? text : (text.isEmpty() ? linkText : text + " " + linkText);
    if (!t || both.isEmpty()) {
        return t ? t->webPage : QUrl();
    }
    QList<std::pair<QString, QString>> query;
    QUrl address;
    switch (target) {
    case Target::WhatsApp:
        address = QUrl(QStringLiteral("https://wa.me/"));
        query = {{"text", both}};
        break;
    case Target::Facebook:
        if (linkText.isEmpty()) {
            return t->webPage;
        }
        address = QUrl(QStringLiteral("https://www.facebook.com/sharer/sharer.php"));
        query = {{"u", linkText}};
        if (!text.isEmpty()) {
            query.append({"quote", text});
        }
        break;
    case Target::Twitter:
        address = QUrl(QStringLiteral("https://x.com/intent/tweet"));
        if (!text.isEmpty()) {
            query.append({"text", text});
        }
        if (!linkText.isEmpty()) {
            query.append({"url", linkText});
        }
        break;
    case Target::Telegram:
        address = QUrl(QStringLiteral("https://t.me/share/url"));
        query = {{"url", linkText.isEmpty() ? text : linkText}};
        if (!linkText.isEmpty() && !text.isEmpty()) {
            query.append({"text", text});
        }
        break;
    case Target::Mail:
        address = QUrl(QStringLiteral("mailto:"));
        query = {{"subject", QStringLiteral("طارفولين")},
                 {"body", linkText.isEmpty() ? text : text + "\n" + linkText}};
        break;
    default:
        return t->webPage;
    }
    // Every character but the unreserved ones is escaped, so that "&", "=" or "+" in a text stay in its
    // value.
    QStringList pairs;
    for (const auto& [key, value] : query) {
        pairs << key + "=" + QString::fromLatin1(QUrl::toPercentEncoding(value));
    }
    address.setQuery(pairs.join(QLatin1Char('&')), QUrl::StrictMode);
    return address;
}

void ShareSheet::presentActivity(const ShareItems& items, const QStringList& excludedActivityTypes,
                                 Completion done) {
    QStringList offered;
    for (const TargetInfo& t : allTargets()) {
        if (excludedActivityTypes.contains(t.activityType)) {
            continue;
        }
        const bool hasPicture = !items.image.isNull();
        if ((t.picturesOnly && !hasPicture) || (!hasPicture && !items.hasWords())) {
            continue;
        }
        offered << t.activityType;
    }
    present(QStringLiteral("مشاركة"), items, offered, false, std::move(done));
}

bool ShareSheet::isComposeAvailable(Target service) {
    const TargetInfo* t = info(service);
    return t && !t->webPage.isEmpty() && Platform::shared().urls().canOpenURL(t->webPage);
}

void ShareSheet::presentCompose(Target service, const ShareItems& items, Completion done) {
    const TargetInfo* t = info(service);
    if (!t) {
        return;
    }
    present(QStringLiteral("نشر على %1").arg(t->name), items, {t->activityType}, true, std::move(done));
}

void ShareSheet::presentOpenIn(const QString& filePath, const QString& typeIdentifier, Completion done) {
    ShareItems items;
    items.image = QImage(filePath);
    QStringList offered;
    for (const TargetInfo& t : allTargets()) {
        if (t.typeIdentifier == typeIdentifier && !typeIdentifier.isEmpty()) {
            offered << t.activityType;
        }
    }
    offered << UIActivity::TypeSaveToCameraRoll;
    present(QStringLiteral("فتح بواسطة"), items, offered, false, std::move(done));
}

void ShareSheet::present(const QString& title, const ShareItems& items, const QStringList& offered,
                         bool compose, Completion done) {
    if (m_done) {
        // One sheet at a time: the one before is taken as cancelled.
        finish(QString(), false);
    }
    m_title = title;
    m_items = items;
    m_offered = offered;
    m_compose = compose;
    m_picture = SharePictures::put(QStringLiteral("sheet"), m_items.image);
    m_done = done ? std::move(done) : [](const QString&, bool) {};
    emit changed();
}

void ShareSheet::setText(const QString& text) {
    if (text == m_items.text()) {
        return;
    }
    m_items.texts = text.isEmpty() ? QStringList() : QStringList{text};
    emit changed();
}

QVariantList ShareSheet::targets() const {
    QVariantList list;
    for (const QString& type : m_offered) {
        if (const TargetInfo* t = infoForActivityType(type)) {
            list << QVariantMap{{"activityType", t->activityType},
                                {"name", t->name},
                                {"glyph", t->glyph},
                                {"color", t->color},
                                {"glyphColor", t->glyphColor}};
        }
    }
    return list;
}

bool ShareSheet::choose(const QString& activityType) {
    const TargetInfo* t = infoForActivityType(activityType);
    if (!m_done || !t || !m_offered.contains(activityType)) {
        return false;
    }
    if (!carry(*t)) {
        return false;
    }
    finish(activityType, true);
    return true;
}

bool ShareSheet::post() {
    return m_compose && !m_offered.isEmpty() && choose(m_offered.first());
}

void ShareSheet::cancel() {
    finish(QString(), false);
}

bool ShareSheet::carry(const TargetInfo& target) {
    auto& platform = Platform::shared();
    if (target.target == Target::CopyLink) {
        QClipboard* clipboard = QGuiApplication::clipboard();
        if (!clipboard) {
            return false;
        }
        if (!m_items.image.isNull() && !m_items.hasWords()) {
            clipboard->setImage(m_items.image);
        } else {
            const QString link = m_items.url.toString();
            clipboard->setText(link.isEmpty() ? m_items.text() : m_items.text() + "\n" + link);
        }
        platform.banner().titleMessageTime(QStringLiteral("تم النسخ"), QStringLiteral("الصقه حيث تشاء"), 3.0);
        return true;
    }
    if (!m_items.image.isNull()) {
        const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
        const QString suggested =
            QDir(pictures.isEmpty() ? QDir::homePath() : pictures).filePath(QStringLiteral("tarvolin.jpg"));
        const QString title = target.target == Target::SavePicture
                                  ? QStringLiteral("احفظ الصورة")
                                  : QStringLiteral("احفظ الصورة لترسلها عبر %1").arg(target.name);
        const QString path = platform.files().saveFileName(title, suggested);
        if (path.isEmpty()) {
            return false;
        }
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || !m_items.image.save(&file, "JPG", 100) || !file.commit()) {
            platform.alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
                QStringLiteral("تعذر حفظ الصورة"),
                QStringLiteral("لا يمكن الكتابة في %1، اختر مكانا آخر.").arg(QDir::toNativeSeparators(path)),
                QStringLiteral("موافق"), {}, nullptr);
            return false;
        }
        platform.banner().titleMessageTime(QStringLiteral("حُفظت الصورة"), QDir::toNativeSeparators(path),
                                           4.0);
        if (target.target == Target::SavePicture) {
            return true;
        }
    }
    return open(target, shareAddress(target.target, m_items.text(), m_items.url));
}

bool ShareSheet::open(const TargetInfo& target, const QUrl& address) {
    if (!address.isEmpty() && Platform::shared().urls().openURL(address)) {
        return true;
    }
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("تعذر الوصول إلى %1").arg(target.name),
        QStringLiteral("لا يوجد على هذا الجهاز ما يفتح %1، جرب وجهة أخرى.").arg(target.name),
        QStringLiteral("موافق"), {}, nullptr);
    return false;
}

void ShareSheet::finish(const QString& activityType, bool completed) {
    if (!m_done) {
        return;
    }
    Completion done = std::move(m_done);
    m_done = nullptr;
    m_items = ShareItems();
    m_offered.clear();
    m_compose = false;
    m_picture = SharePictures::put(QStringLiteral("sheet"), QImage());
    emit changed();
    done(activityType, completed);
}

namespace {
QMutex& picturesMutex() {
    static QMutex mutex;
    return mutex;
}
QHash<QString, QImage>& pictures() {
    static QHash<QString, QImage> table;
    return table;
}

class SharePictureProvider : public QQuickImageProvider {
public:
    SharePictureProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}
    QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override {
        QImage image = SharePictures::get(id.section(QLatin1Char('/'), 0, 0));
        if (!image.isNull() && requestedSize.isValid()) {
            image = image.scaled(requestedSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        }
        if (size) {
            *size = image.size();
        }
        return image;
    }
};
} // namespace

QUrl SharePictures::put(const QString& name, const QImage& image) {
    static quint64 serial = 0;
    QMutexLocker lock(&picturesMutex());
    pictures().insert(name, image);
    return image.isNull() ? QUrl() : QUrl(QStringLiteral("image://share/%1/%2").arg(name).arg(++serial));
}

QImage SharePictures::get(const QString& name) {
    QMutexLocker lock(&picturesMutex());
    return pictures().value(name);
}

QQuickImageProvider* SharePictures::provider() {
    return new SharePictureProvider();
}
