#pragma once

#include <QDBusAbstractAdaptor>
#include <QString>
#include <QStringList>

namespace Core::MediaControls {

class MprisService;

// org.mpris.MediaPlayer2: who the player is. A panel may raise the window but not
// end the program: an unattended shop's music must not stop from a panel's close
// button.
class MprisRootAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(QString Identity READ Identity)
    Q_PROPERTY(QString DesktopEntry READ DesktopEntry)
    Q_PROPERTY(bool CanQuit READ CanQuit)
    Q_PROPERTY(bool CanRaise READ CanRaise)
    Q_PROPERTY(bool HasTrackList READ HasTrackList)
    Q_PROPERTY(QStringList SupportedUriSchemes READ SupportedUriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ SupportedMimeTypes)

public:
    explicit MprisRootAdaptor(MprisService& service);
    ~MprisRootAdaptor() override;

    QString Identity() const;
    QString DesktopEntry() const;
    bool CanQuit() const;
    bool CanRaise() const;
    bool HasTrackList() const;
    QStringList SupportedUriSchemes() const;
    QStringList SupportedMimeTypes() const;

public slots:
    void Raise();
    // CanQuit is false, so a call changes nothing, as the protocol has it.
    void Quit();

private:
    MprisService& service;
};

} // namespace Core::MediaControls
