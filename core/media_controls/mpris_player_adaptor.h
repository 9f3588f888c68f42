#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QString>
#include <QVariantMap>

namespace Core::MediaControls {

class MprisService;

// org.mpris.MediaPlayer2.Player: the music that plays and the buttons a panel
// offers for it. Stop pauses: the player has no state a panel could stop it into
// that "Play" would not resume, and a shop's music stopped from a panel has to be
// startable from the same panel. The sound level is the schedule's (each period
// sets its own), so Volume reads 1.0 and cannot be set; the schedule decides the
// position too, so there is no seeking.
class MprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ PlaybackStatus)
    Q_PROPERTY(QVariantMap Metadata READ Metadata)
    Q_PROPERTY(double Rate READ Rate)
    Q_PROPERTY(double MinimumRate READ Rate)
    Q_PROPERTY(double MaximumRate READ Rate)
    Q_PROPERTY(double Volume READ Volume)
    Q_PROPERTY(qlonglong Position READ Position)
    Q_PROPERTY(bool CanGoNext READ CanGoNext)
    Q_PROPERTY(bool CanGoPrevious READ CanGoPrevious)
    Q_PROPERTY(bool CanPlay READ CanPlay)
    Q_PROPERTY(bool CanPause READ CanPause)
    Q_PROPERTY(bool CanSeek READ CanSeek)
    Q_PROPERTY(bool CanControl READ CanControl)

public:
    explicit MprisPlayerAdaptor(MprisService& service);
    ~MprisPlayerAdaptor() override;

    QString PlaybackStatus() const;
    QVariantMap Metadata() const;
    double Rate() const;
    double Volume() const;
    qlonglong Position() const;
    bool CanGoNext() const;
    bool CanGoPrevious() const;
    bool CanPlay() const;
    bool CanPause() const;
    bool CanSeek() const;
    bool CanControl() const;

public slots:
    void Play();
    void Pause();
    void PlayPause();
    void Stop();
    void Next();
    void Previous();
    // CanSeek is false and no URI scheme is offered: these change nothing, as the
    // protocol has it for such a player.
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath& trackId, qlonglong position);
    void OpenUri(const QString& uri);

signals:
    // Declared for introspection: the player does not seek on its own account.
    void Seeked(qlonglong position);

private:
    MprisService& service;
};

} // namespace Core::MediaControls
