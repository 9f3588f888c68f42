#include "ui/ui_kit/ui_kit.h"

#include "core/data_types/playback/like_status.h"
#include "core/settings.h"
#include "ui/ui_kit/ui_resources.h"

#include <QFontDatabase>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QtDebug>

namespace UI {

namespace {

struct Rgb
{
    int r;
    int g;
    int b;

    // The theme keeps 16 bits per channel; an 8-bit value v becomes v × 257 so that
    // 255 is exactly full intensity.
    QColor ToColor() const
    {
        return QColor::fromRgba64(static_cast<quint16>(r * 257), static_cast<quint16>(g * 257),
                                  static_cast<quint16>(b * 257), 65535);
    }
};

struct Tone
{
    Rgb light;
    Rgb dark;
};

// Warm neutrals around the screen background with one green accent. The light
// palette puts white cards on the off-white screen; the dark one lifts each surface
// a step above the last. Text comes in three strengths.
constexpr Tone Background{{250, 250, 249}, {28, 25, 23}};
constexpr Tone Surface{{255, 255, 255}, {41, 37, 36}};
constexpr Tone SurfaceRaised{{245, 245, 244}, {55, 50, 48}};
constexpr Tone SurfacePressed{{231, 229, 228}, {68, 64, 60}};
constexpr Tone Hairline{{231, 229, 228}, {68, 64, 60}};
constexpr Tone StrongLine{{168, 162, 158}, {120, 113, 108}};
constexpr Tone TextPrimary{{28, 25, 23}, {250, 250, 249}};
constexpr Tone TextSecondary{{87, 83, 78}, {214, 211, 209}};
constexpr Tone TextDisabled{{150, 144, 140}, {130, 123, 118}};
// The accent is dark enough for white text in the light palette and light enough
// for dark text in the dark one.
constexpr Tone Accent{{21, 128, 61}, {74, 222, 128}};
constexpr Tone AccentHover{{22, 101, 52}, {134, 239, 172}};
constexpr Tone AccentPressed{{20, 83, 45}, {34, 197, 94}};
constexpr Tone AccentSoft{{220, 252, 231}, {22, 58, 38}};
constexpr Tone OnAccent{{255, 255, 255}, {20, 33, 24}};
constexpr Tone Warning{{180, 83, 9}, {251, 191, 36}};
constexpr Tone WarningSoft{{254, 243, 199}, {66, 52, 20}};
constexpr Tone Error{{185, 28, 28}, {248, 113, 113}};
constexpr Tone ErrorSoft{{254, 226, 226}, {76, 29, 29}};
constexpr Tone ErrorHover{{153, 27, 27}, {252, 165, 165}};
constexpr Tone Link{{21, 128, 61}, {134, 239, 172}};
constexpr Tone Dim{{0, 0, 0}, {0, 0, 0}};
constexpr Tone Shadow{{214, 211, 209}, {12, 10, 9}};
constexpr Tone Disabled{{214, 211, 209}, {68, 64, 60}};
constexpr Tone Stopped{{120, 113, 108}, {168, 162, 158}};

// The five font files of the resources; QFont properties name their families.
const char* const DisplayFamily = "Roboto";
const char* const BodyFamily = "Open Sans";
const char* const MonoFamily = "JetBrains Mono";

QFont Face(const char* family, QFont::Weight weight)
{
    QFont font(QString::fromLatin1(family));
    font.setWeight(weight);
    return font;
}

} // namespace

UiKit& UiKit::GetInstance()
{
    // Never destroyed: QML documents still bound to it may outlive any owner.
    static UiKit* instance = new UiKit();
    return *instance;
}

UiKit::UiKit()
{
    mDeviceType = Smartphone;
    mDarkTheme = true;
    // A fresh installation stores its default, so the settings file always says
    // which palette the screens show.
    const bool stored = Core::Settings::DarkTheme();
    Core::Settings::SetDarkTheme(stored);
    mDarkTheme = stored;

    UiResources::Initialize();
    static const char* const fontFiles[] = {
        ":/ui_kit/fonts/Roboto-Bold.ttf",        ":/ui_kit/fonts/OpenSans-Regular.ttf",
        ":/ui_kit/fonts/OpenSans-Semibold.ttf",  ":/ui_kit/fonts/JetBrainsMono-Regular.ttf",
        ":/ui_kit/fonts/JetBrainsMono-Bold.ttf",
    };
    for (const char* file : fontFiles) {
        if (QFontDatabase::addApplicationFont(QString::fromLatin1(file)) < 0) {
            qWarning() << "Шрифт не загружен:" << file;
        }
    }
}

bool UiKit::IsDarkTheme() const
{
    return mDarkTheme;
}

void UiKit::SetDarkTheme(bool dark)
{
    mDarkTheme = dark;
    Core::Settings::SetDarkTheme(dark);
    EmitAllSignals();
}

void UiKit::SwitchTheme()
{
    SetDarkTheme(!mDarkTheme);
}

void UiKit::EmitAllSignals()
{
    // Every property's change signal, found through the meta-object so that a
    // property added to the header can never be left out of a theme switch.
    const QMetaObject* meta = metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaMethod signal = meta->property(i).notifySignal();
        if (signal.isValid()) {
            signal.invoke(this, Qt::DirectConnection);
        }
    }
}

void UiKit::SetDeviceType(std::int32_t type)
{
    mDeviceType = type;
    EmitAllSignals();
}

std::int32_t UiKit::DeviceType() const
{
    return mDeviceType;
}

bool UiKit::IsSmartphone() const
{
    return mDeviceType == Smartphone;
}

QUrl UiKit::Icon(const char* name, bool accent) const
{
    const char* palette =
        mDarkTheme ? (accent ? "dark-accent" : "dark") : (accent ? "light-accent" : "light");
    return QUrl(
        QStringLiteral("qrc:/ui_kit/icons/%1/%2.svg").arg(QLatin1String(palette), QLatin1String(name)));
}

#define ZELMAR_COLOR_VALUE(Name, tone)                                                                       \
    QColor UiKit::Name() const                                                                               \
    {                                                                                                        \
        return (mDarkTheme ? tone.dark : tone.light).ToColor();                                              \
    }
#define ZELMAR_FONT_VALUE(Name, family, weight)                                                              \
    QFont UiKit::Name() const                                                                                \
    {                                                                                                        \
        return Face(family, weight);                                                                         \
    }
#define ZELMAR_INT_VALUE(Name, value)                                                                        \
    int UiKit::Name() const                                                                                  \
    {                                                                                                        \
        return value;                                                                                        \
    }
#define ZELMAR_ICON_VALUE(Name, file, accent)                                                                \
    QUrl UiKit::Name() const                                                                                 \
    {                                                                                                        \
        return Icon(file, accent);                                                                           \
    }

// Colours: the screen and its surfaces.
ZELMAR_COLOR_VALUE(ScreenBackgroundColor, Background)
ZELMAR_COLOR_VALUE(CardBackground, Surface)
ZELMAR_COLOR_VALUE(CardBorderColor, Hairline)
ZELMAR_COLOR_VALUE(CardHoverBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(CardSelectedBackground, AccentSoft)
ZELMAR_COLOR_VALUE(CardSelectedBorderColor, Accent)
ZELMAR_COLOR_VALUE(DividerColor, Hairline)
ZELMAR_COLOR_VALUE(FocusRingColor, Accent)
ZELMAR_COLOR_VALUE(BlackoutColor, Dim)
ZELMAR_COLOR_VALUE(ShadowColor, Shadow)
// Colours: text and signals.
ZELMAR_COLOR_VALUE(TextPrimaryColor, TextPrimary)
ZELMAR_COLOR_VALUE(TextSecondaryColor, TextSecondary)
ZELMAR_COLOR_VALUE(TextDisabledColor, TextDisabled)
ZELMAR_COLOR_VALUE(TextOnAccentColor, OnAccent)
ZELMAR_COLOR_VALUE(AccentColor, Accent)
ZELMAR_COLOR_VALUE(AccentSoftBackground, AccentSoft)
ZELMAR_COLOR_VALUE(WarningColor, Warning)
ZELMAR_COLOR_VALUE(WarningSoftBackground, WarningSoft)
ZELMAR_COLOR_VALUE(ErrorColor, Error)
ZELMAR_COLOR_VALUE(ErrorSoftBackground, ErrorSoft)
ZELMAR_COLOR_VALUE(LinkColor, Link)
ZELMAR_COLOR_VALUE(LinkHoverColor, AccentHover)
// Colours: buttons.
ZELMAR_COLOR_VALUE(PrimaryButtonBackground, Accent)
ZELMAR_COLOR_VALUE(PrimaryButtonHoverBackground, AccentHover)
ZELMAR_COLOR_VALUE(PrimaryButtonPressedBackground, AccentPressed)
ZELMAR_COLOR_VALUE(PrimaryButtonDisabledBackground, Disabled)
ZELMAR_COLOR_VALUE(PrimaryButtonTextColor, OnAccent)
ZELMAR_COLOR_VALUE(PrimaryButtonDisabledTextColor, TextDisabled)
ZELMAR_COLOR_VALUE(SecondaryButtonBackground, Surface)
ZELMAR_COLOR_VALUE(SecondaryButtonHoverBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(SecondaryButtonPressedBackground, SurfacePressed)
ZELMAR_COLOR_VALUE(SecondaryButtonBorderColor, StrongLine)
ZELMAR_COLOR_VALUE(SecondaryButtonTextColor, TextPrimary)
ZELMAR_COLOR_VALUE(DangerButtonBackground, Error)
ZELMAR_COLOR_VALUE(DangerButtonHoverBackground, ErrorHover)
ZELMAR_COLOR_VALUE(DangerButtonTextColor, OnAccent)
ZELMAR_COLOR_VALUE(IconButtonHoverBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(IconButtonPressedBackground, SurfacePressed)
// Colours: input fields and choosers.
ZELMAR_COLOR_VALUE(TextFieldBackground, Surface)
ZELMAR_COLOR_VALUE(TextFieldBorderColor, StrongLine)
ZELMAR_COLOR_VALUE(TextFieldBorderColorSelected, Accent)
ZELMAR_COLOR_VALUE(TextFieldBorderColorError, Error)
ZELMAR_COLOR_VALUE(TextFieldTextColor, TextPrimary)
ZELMAR_COLOR_VALUE(TextFieldPlaceholderColor, TextDisabled)
ZELMAR_COLOR_VALUE(TextFieldSelectionBackground, AccentSoft)
ZELMAR_COLOR_VALUE(ComboBoxPopupBackground, Surface)
ZELMAR_COLOR_VALUE(ComboBoxItemHoverBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(SuggestionListBackground, Surface)
ZELMAR_COLOR_VALUE(SuggestionListItemHoverBackground, AccentSoft)
ZELMAR_COLOR_VALUE(SwitchTrackColor, SurfacePressed)
ZELMAR_COLOR_VALUE(SwitchTrackColorSelected, Accent)
ZELMAR_COLOR_VALUE(SwitchKnobColor, Surface)
ZELMAR_COLOR_VALUE(SliderTrackColor, SurfacePressed)
ZELMAR_COLOR_VALUE(SliderTrackColorSelected, Accent)
ZELMAR_COLOR_VALUE(SliderHandleColor, Accent)
// A slider switched off keeps showing its value, in grey rather than the accent.
ZELMAR_COLOR_VALUE(SliderTrackColorSelectedDisabled, TextDisabled)
ZELMAR_COLOR_VALUE(ChipBackground, Surface)
ZELMAR_COLOR_VALUE(ChipBackgroundSelected, Accent)
ZELMAR_COLOR_VALUE(ChipBorderColor, StrongLine)
ZELMAR_COLOR_VALUE(ChipTextColor, TextPrimary)
ZELMAR_COLOR_VALUE(ChipTextColorSelected, OnAccent)
// Colours: sign-in and sign-up.
ZELMAR_COLOR_VALUE(AuthCardBackground, Surface)
ZELMAR_COLOR_VALUE(AuthProductNameColor, Accent)
ZELMAR_COLOR_VALUE(AuthFooterTextColor, TextSecondary)
ZELMAR_COLOR_VALUE(AuthMessageErrorColor, Error)
ZELMAR_COLOR_VALUE(AuthMessageWarningColor, Warning)
ZELMAR_COLOR_VALUE(StepIndicatorColor, SurfacePressed)
ZELMAR_COLOR_VALUE(StepIndicatorColorSelected, Accent)
ZELMAR_COLOR_VALUE(StepIndicatorTextColor, TextSecondary)
ZELMAR_COLOR_VALUE(ObjectCardIconBackground, AccentSoft)
ZELMAR_COLOR_VALUE(BusinessTypeTileBackground, Surface)
ZELMAR_COLOR_VALUE(BusinessTypeTileBackgroundSelected, AccentSoft)
ZELMAR_COLOR_VALUE(SignUpSuccessMarkColor, Accent)
// Colours: side bar.
ZELMAR_COLOR_VALUE(SideBarBackground, Surface)
ZELMAR_COLOR_VALUE(SideBarBorderColor, Hairline)
ZELMAR_COLOR_VALUE(SideBarFontColor, TextSecondary)
ZELMAR_COLOR_VALUE(SideBarFontColorSelected, Accent)
ZELMAR_COLOR_VALUE(SideBarItemBackgroundSelected, AccentSoft)
ZELMAR_COLOR_VALUE(SideBarItemHoverBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(SideBarVersionTextColor, TextSecondary)
ZELMAR_COLOR_VALUE(StatusPlayingColor, Accent)
ZELMAR_COLOR_VALUE(StatusPausedColor, Warning)
ZELMAR_COLOR_VALUE(StatusStoppedColor, Stopped)
ZELMAR_COLOR_VALUE(ServerOnlineColor, Accent)
ZELMAR_COLOR_VALUE(ServerOfflineColor, Error)
// Colours: tabs and navigation.
ZELMAR_COLOR_VALUE(NavBarBackground, Background)
ZELMAR_COLOR_VALUE(NavBarTitleColor, TextPrimary)
ZELMAR_COLOR_VALUE(TabBarBackground, Background)
ZELMAR_COLOR_VALUE(TabBarTextColor, TextSecondary)
ZELMAR_COLOR_VALUE(TabBarTextColorSelected, TextPrimary)
ZELMAR_COLOR_VALUE(TabBarIndicatorColor, Accent)
// Colours: now playing.
ZELMAR_COLOR_VALUE(TrackInfoViewTrackTitleColor, TextPrimary)
ZELMAR_COLOR_VALUE(TrackInfoViewArtistColor, TextSecondary)
ZELMAR_COLOR_VALUE(TrackInfoViewCoverBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(PeriodTitleColor, TextPrimary)
ZELMAR_COLOR_VALUE(ClockTextColor, TextSecondary)
ZELMAR_COLOR_VALUE(ProgressBarBackground, SurfacePressed)
ZELMAR_COLOR_VALUE(ProgressBarColor, Accent)
ZELMAR_COLOR_VALUE(DownloadProgressColor, Accent)
ZELMAR_COLOR_VALUE(AdBandBackground, WarningSoft)
ZELMAR_COLOR_VALUE(AdBandTextColor, TextPrimary)
ZELMAR_COLOR_VALUE(LikeButtonColorSelected, Accent)
ZELMAR_COLOR_VALUE(DislikeButtonColorSelected, Error)
ZELMAR_COLOR_VALUE(VideoAreaBackground, Dim)
ZELMAR_COLOR_VALUE(StateMessageTextColor, TextSecondary)
// Colours: schedule, ads list, track list.
ZELMAR_COLOR_VALUE(ScheduleColumnBackground, Surface)
ZELMAR_COLOR_VALUE(ScheduleColumnBackgroundSelected, AccentSoft)
ZELMAR_COLOR_VALUE(SchedulePeriodBackground, SurfaceRaised)
ZELMAR_COLOR_VALUE(SchedulePeriodBorderColorSelected, Accent)
ZELMAR_COLOR_VALUE(AdsListItemBackground, Surface)
ZELMAR_COLOR_VALUE(AdsListItemPlayedTextColor, TextDisabled)
ZELMAR_COLOR_VALUE(TrackListItemBackgroundSelected, AccentSoft)
ZELMAR_COLOR_VALUE(TrackListItemHoverBackground, SurfaceRaised)
// Colours: content playlists.
ZELMAR_COLOR_VALUE(PlaylistViewCardBackground, Surface)
ZELMAR_COLOR_VALUE(PlaylistViewButtonActiveBackground, Accent)
ZELMAR_COLOR_VALUE(PlaylistViewActiveBadgeBackground, Accent)
ZELMAR_COLOR_VALUE(PlaylistViewActiveBadgeTextColor, OnAccent)
ZELMAR_COLOR_VALUE(PlaylistViewCoverPlaceholderBackground, SurfaceRaised)
// Colours: settings, log, certificate, dialogs, errors.
ZELMAR_COLOR_VALUE(SettingsGroupBackground, Surface)
ZELMAR_COLOR_VALUE(SettingsGroupTitleColor, TextPrimary)
ZELMAR_COLOR_VALUE(LogViewBackground, Surface)
ZELMAR_COLOR_VALUE(LogViewTextColor, TextPrimary)
ZELMAR_COLOR_VALUE(LogViewHighlightBackground, WarningSoft)
ZELMAR_COLOR_VALUE(CertificateFrameBackground, Surface)
ZELMAR_COLOR_VALUE(DialogBackground, Surface)
ZELMAR_COLOR_VALUE(DialogBorderColor, Hairline)
ZELMAR_COLOR_VALUE(DialogHeaderColor, TextPrimary)
ZELMAR_COLOR_VALUE(DialogTextColor, TextSecondary)
ZELMAR_COLOR_VALUE(ErrorScreenIconBackground, ErrorSoft)
ZELMAR_COLOR_VALUE(ThrobberColor, Accent)
ZELMAR_COLOR_VALUE(ThrobberTrackColor, SurfacePressed)
ZELMAR_COLOR_VALUE(TooltipBackground, TextPrimary)
ZELMAR_COLOR_VALUE(TooltipTextColor, Background)
ZELMAR_COLOR_VALUE(ScrollBarColor, StrongLine)

// Fonts.
ZELMAR_FONT_VALUE(DisplayFont, DisplayFamily, QFont::Bold)
ZELMAR_FONT_VALUE(BodyFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(BodyStrongFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(MonoFont, MonoFamily, QFont::Normal)
ZELMAR_FONT_VALUE(MonoStrongFont, MonoFamily, QFont::Bold)
ZELMAR_FONT_VALUE(ScreenTitleFont, DisplayFamily, QFont::Bold)
ZELMAR_FONT_VALUE(ScreenSubtitleFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(CardTitleFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(CardTextFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(CaptionFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(PrimaryButtonFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(SecondaryButtonFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(TextFieldFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(TextFieldLabelFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(AuthProductNameFont, DisplayFamily, QFont::Bold)
ZELMAR_FONT_VALUE(AuthFooterFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(AuthMessageFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(StepIndicatorFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(ConfirmationCodeFont, MonoFamily, QFont::Bold)
ZELMAR_FONT_VALUE(ChipFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(SideBarProductFont, DisplayFamily, QFont::Bold)
ZELMAR_FONT_VALUE(SideBarFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(SideBarFontSelected, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(SideBarStatusFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(SideBarVersionFont, MonoFamily, QFont::Normal)
ZELMAR_FONT_VALUE(TabBarFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(TrackInfoViewTrackTitleFont, DisplayFamily, QFont::Bold)
ZELMAR_FONT_VALUE(TrackInfoViewArtistFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(PeriodTitleFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(ClockFont, MonoFamily, QFont::Bold)
ZELMAR_FONT_VALUE(TimeTextFont, MonoFamily, QFont::Normal)
ZELMAR_FONT_VALUE(AdBandFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(StateMessageFont, BodyFamily, QFont::Normal)
ZELMAR_FONT_VALUE(ScheduleTitleFont, BodyFamily, QFont::DemiBold)
ZELMAR_FONT_VALUE(LogViewFont, MonoFamily, QFont::Normal)
ZELMAR_FONT_VALUE(DialogHeaderFont, DisplayFamily, QFont::Bold)
ZELMAR_FONT_VALUE(DialogTextFont, BodyFamily, QFont::Normal)

// Font sizes: large type for what matters from across the room (track 28 pt,
// period 20 pt), small only for details.
ZELMAR_INT_VALUE(ScreenTitlePointSize, 22)
ZELMAR_INT_VALUE(ScreenSubtitlePointSize, 13)
ZELMAR_INT_VALUE(CardTitlePointSize, 14)
ZELMAR_INT_VALUE(CardTextPointSize, 12)
ZELMAR_INT_VALUE(CaptionPointSize, 10)
ZELMAR_INT_VALUE(ButtonPointSize, 12)
ZELMAR_INT_VALUE(TextFieldPointSize, 13)
ZELMAR_INT_VALUE(TextFieldLabelPointSize, 11)
ZELMAR_INT_VALUE(AuthProductNamePointSize, 26)
ZELMAR_INT_VALUE(AuthFooterPointSize, 10)
ZELMAR_INT_VALUE(AuthMessagePointSize, 11)
ZELMAR_INT_VALUE(StepIndicatorPointSize, 11)
ZELMAR_INT_VALUE(ConfirmationCodePointSize, 22)
ZELMAR_INT_VALUE(ChipPointSize, 11)
ZELMAR_INT_VALUE(SideBarProductPointSize, 18)
ZELMAR_INT_VALUE(SideBarPointSize, 13)
ZELMAR_INT_VALUE(SideBarStatusPointSize, 11)
ZELMAR_INT_VALUE(SideBarVersionPointSize, 9)
ZELMAR_INT_VALUE(TabBarPointSize, 13)
ZELMAR_INT_VALUE(TrackInfoViewTrackTitleTextPointSize, 28)
ZELMAR_INT_VALUE(TrackInfoViewArtistTextPointSize, 16)
ZELMAR_INT_VALUE(PeriodTitlePointSize, 20)
ZELMAR_INT_VALUE(ClockPointSize, 20)
ZELMAR_INT_VALUE(TimeTextPointSize, 11)
ZELMAR_INT_VALUE(AdBandPointSize, 14)
ZELMAR_INT_VALUE(StateMessagePointSize, 16)
ZELMAR_INT_VALUE(LogViewPointSize, 10)
ZELMAR_INT_VALUE(DialogHeaderPointSize, 18)
ZELMAR_INT_VALUE(DialogTextPointSize, 13)

// Icons: the file names of the generated icon set; "Selected" ones are drawn in the
// accent colour.
ZELMAR_ICON_VALUE(LogoImage, "logo", false)
ZELMAR_ICON_VALUE(LogoMarkImage, "logo", true)
ZELMAR_ICON_VALUE(PlayIcon, "play", false)
ZELMAR_ICON_VALUE(PauseIcon, "pause", false)
ZELMAR_ICON_VALUE(StopIcon, "stop", false)
ZELMAR_ICON_VALUE(NextTrackIcon, "next", false)
ZELMAR_ICON_VALUE(PreviousTrackIcon, "previous", false)
ZELMAR_ICON_VALUE(VolumeIcon, "volume", false)
ZELMAR_ICON_VALUE(VolumeMutedIcon, "volume-muted", false)
ZELMAR_ICON_VALUE(LikeIcon, "like", false)
ZELMAR_ICON_VALUE(LikeIconSelected, "like", true)
ZELMAR_ICON_VALUE(DislikeIcon, "dislike", false)
ZELMAR_ICON_VALUE(DislikeIconSelected, "dislike", true)
ZELMAR_ICON_VALUE(TrackCoverPlaceholderImage, "music", false)
ZELMAR_ICON_VALUE(VideoPlaceholderImage, "video", false)
ZELMAR_ICON_VALUE(PhotoPlaceholderImage, "photo", false)
ZELMAR_ICON_VALUE(SideBarPlayerIcon, "play", false)
ZELMAR_ICON_VALUE(SideBarPlayerIconSelected, "play", true)
ZELMAR_ICON_VALUE(SideBarMusicIcon, "music", false)
ZELMAR_ICON_VALUE(SideBarMusicIconSelected, "music", true)
ZELMAR_ICON_VALUE(SideBarVideoIcon, "video", false)
ZELMAR_ICON_VALUE(SideBarVideoIconSelected, "video", true)
ZELMAR_ICON_VALUE(SideBarPhotoIcon, "photo", false)
ZELMAR_ICON_VALUE(SideBarPhotoIconSelected, "photo", true)
ZELMAR_ICON_VALUE(SideBarLicenseIcon, "certificate", false)
ZELMAR_ICON_VALUE(SideBarLicenseIconSelected, "certificate", true)
ZELMAR_ICON_VALUE(SideBarObjectsIcon, "object", false)
ZELMAR_ICON_VALUE(SideBarObjectsIconSelected, "object", true)
ZELMAR_ICON_VALUE(SideBarSettingsIcon, "settings", false)
ZELMAR_ICON_VALUE(SideBarSettingsIconSelected, "settings", true)
ZELMAR_ICON_VALUE(SideBarLogoutIcon, "logout", false)
ZELMAR_ICON_VALUE(ThemeLightIcon, "sun", false)
ZELMAR_ICON_VALUE(ThemeDarkIcon, "moon", false)
ZELMAR_ICON_VALUE(ServerOnlineIcon, "server", true)
ZELMAR_ICON_VALUE(ServerOfflineIcon, "offline", false)
ZELMAR_ICON_VALUE(BackIcon, "back", false)
ZELMAR_ICON_VALUE(ForwardIcon, "forward", false)
ZELMAR_ICON_VALUE(CloseIcon, "close", false)
ZELMAR_ICON_VALUE(CheckIcon, "check", true)
ZELMAR_ICON_VALUE(ChevronDownIcon, "down", false)
ZELMAR_ICON_VALUE(ChevronUpIcon, "up", false)
ZELMAR_ICON_VALUE(SearchIcon, "search", false)
ZELMAR_ICON_VALUE(RefreshIcon, "refresh", false)
ZELMAR_ICON_VALUE(SaveIcon, "save", false)
ZELMAR_ICON_VALUE(OpenInBrowserIcon, "open", false)
ZELMAR_ICON_VALUE(AddIcon, "add", false)
ZELMAR_ICON_VALUE(RemoveIcon, "remove", false)
ZELMAR_ICON_VALUE(ServerIcon, "server", false)
ZELMAR_ICON_VALUE(UserIcon, "user", false)
ZELMAR_ICON_VALUE(PasswordIcon, "lock", false)
ZELMAR_ICON_VALUE(PhoneIcon, "phone", false)
ZELMAR_ICON_VALUE(EmailIcon, "mail", false)
ZELMAR_ICON_VALUE(CityIcon, "location", false)
ZELMAR_ICON_VALUE(ObjectIcon, "object", false)
ZELMAR_ICON_VALUE(ObjectIconSelected, "object", true)
ZELMAR_ICON_VALUE(BusinessTypeIcon, "object", true)
ZELMAR_ICON_VALUE(MusicStyleIcon, "music", true)
ZELMAR_ICON_VALUE(SignUpSuccessImage, "success", true)
ZELMAR_ICON_VALUE(WarningIcon, "warning", false)
ZELMAR_ICON_VALUE(ErrorIcon, "error", false)
ZELMAR_ICON_VALUE(InfoIcon, "info", false)
ZELMAR_ICON_VALUE(AccountErrorImage, "lock", false)
ZELMAR_ICON_VALUE(ScheduleIcon, "calendar", false)
ZELMAR_ICON_VALUE(AdsIcon, "ads", false)
ZELMAR_ICON_VALUE(TrackListIcon, "list", false)
ZELMAR_ICON_VALUE(ClockIcon, "clock", false)
ZELMAR_ICON_VALUE(DownloadIcon, "download", false)
ZELMAR_ICON_VALUE(PeriodFinishedImage, "moon", true)
ZELMAR_ICON_VALUE(ConfigurationErrorImage, "offline", false)
ZELMAR_ICON_VALUE(WrongClockImage, "clock", false)
ZELMAR_ICON_VALUE(PlaylistMusicCoverImage, "music", true)
ZELMAR_ICON_VALUE(PlaylistVideoCoverImage, "video", true)
ZELMAR_ICON_VALUE(PlaylistPhotoCoverImage, "photo", true)
ZELMAR_ICON_VALUE(PlaylistActiveIcon, "check", true)
ZELMAR_ICON_VALUE(CertificateImage, "certificate", true)
ZELMAR_ICON_VALUE(SoundCheckIcon, "volume", false)
ZELMAR_ICON_VALUE(LogIcon, "log", false)

// Metrics and constants.
ZELMAR_INT_VALUE(NavBarHeight, 64)
ZELMAR_INT_VALUE(TabBarHeight, 67)
ZELMAR_INT_VALUE(SideBarMinimumWidth, 232)
ZELMAR_INT_VALUE(SideBarItemHeight, 44)
ZELMAR_INT_VALUE(SideBarIconSize, 20)
ZELMAR_INT_VALUE(StatusDotSize, 10)
ZELMAR_INT_VALUE(SpacingUnit, 4)
ZELMAR_INT_VALUE(SpacingSmall, 8)
ZELMAR_INT_VALUE(SpacingMedium, 16)
ZELMAR_INT_VALUE(SpacingLarge, 24)
ZELMAR_INT_VALUE(SpacingHuge, 40)
ZELMAR_INT_VALUE(ScreenMargin, 32)
ZELMAR_INT_VALUE(ControlRadius, 8)
ZELMAR_INT_VALUE(CardRadius, 12)
ZELMAR_INT_VALUE(CardPadding, 24)
ZELMAR_INT_VALUE(BorderWidth, 1)
ZELMAR_INT_VALUE(FocusRingWidth, 2)
ZELMAR_INT_VALUE(ButtonHeight, 44)
ZELMAR_INT_VALUE(ButtonMinimumWidth, 120)
ZELMAR_INT_VALUE(IconButtonSize, 44)
ZELMAR_INT_VALUE(IconSize, 20)
ZELMAR_INT_VALUE(LargeIconSize, 64)
ZELMAR_INT_VALUE(TextFieldHeight, 44)
ZELMAR_INT_VALUE(AuthCardWidth, 440)
ZELMAR_INT_VALUE(ObjectCardHeight, 72)
ZELMAR_INT_VALUE(BusinessTypeTileWidth, 184)
ZELMAR_INT_VALUE(BusinessTypeTileHeight, 64)
ZELMAR_INT_VALUE(ChipHeight, 36)
ZELMAR_INT_VALUE(SignUpStepCount, 4)
ZELMAR_INT_VALUE(ConfirmationCodeResendSeconds, 60)
ZELMAR_INT_VALUE(SuggestionCount, 4)
ZELMAR_INT_VALUE(DialogWidth, 440)
ZELMAR_INT_VALUE(ThrobberSize, 56)
ZELMAR_INT_VALUE(TrackCoverSize, 240)
ZELMAR_INT_VALUE(ProgressBarHeight, 6)
ZELMAR_INT_VALUE(ThinProgressBarHeight, 3)
ZELMAR_INT_VALUE(PlaylistCardWidth, 200)
ZELMAR_INT_VALUE(PlaylistCardHeight, 260)
ZELMAR_INT_VALUE(ScheduleColumnWidth, 168)
ZELMAR_INT_VALUE(ListRowHeight, 48)
ZELMAR_INT_VALUE(AnimationDuration, 150)
ZELMAR_INT_VALUE(LikeStatusValueLiked, static_cast<int>(Core::DataTypes::Playback::LikeStatus::Liked))
ZELMAR_INT_VALUE(LikeStatusValueDisliked, static_cast<int>(Core::DataTypes::Playback::LikeStatus::Disliked))
ZELMAR_INT_VALUE(LikeStatusValueNone, static_cast<int>(Core::DataTypes::Playback::LikeStatus::None))

qreal UiKit::SideBarScreenWidthPercent() const
{
    return mDeviceType == LargeScreen ? 0.25 : 0.20;
}

qreal UiKit::BlackoutOpacity() const
{
    return mDarkTheme ? 0.6 : 0.4;
}

qreal UiKit::AdsListItemPlayedOpacity() const
{
    // Dimmed enough to step back from the blocks still to come, still legible.
    return 0.6;
}

} // namespace UI
