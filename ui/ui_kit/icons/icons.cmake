# The screens' icons: symbolic SVGs from Debian's Adwaita icon theme (drawn in one
# colour: #2e3436, in a few icons #2e3434 or #474747), recoloured at configure time into one set per palette and an
# accent set per palette for selected states. QML picks a set through UiKit.
#
# Sets ZELMAR_ICON_QRC_ENTRIES to the <file> lines of the generated resources.

set(ZELMAR_ADWAITA_DIR /usr/share/icons/Adwaita/scalable)
if(NOT EXISTS ${ZELMAR_ADWAITA_DIR}/actions/media-playback-start-symbolic.svg)
    message(FATAL_ERROR "The Adwaita icon theme is missing (${ZELMAR_ADWAITA_DIR}): run scripts/install-deps")
endif()

# our name = Adwaita's symbolic icon, or "@" for the mark drawn in this folder
set(_zelmar_icons
    play=actions/media-playback-start
    pause=actions/media-playback-pause
    stop=actions/media-playback-stop
    next=actions/media-skip-forward
    previous=actions/media-skip-backward
    volume=status/audio-volume-high
    volume-muted=status/audio-volume-muted
    like=emotes/emote-love
    dislike=emotes/face-sad
    music=emblems/emblem-music
    video=mimetypes/video-x-generic
    photo=mimetypes/image-x-generic
    certificate=mimetypes/application-certificate
    object=places/user-home
    settings=emblems/emblem-system
    logout=actions/system-log-out
    sun=status/weather-clear
    moon=status/weather-clear-night
    server=places/network-server
    offline=status/network-offline
    back=actions/go-previous
    forward=actions/go-next
    close=ui/window-close
    check=actions/object-select
    down=actions/go-down
    up=actions/go-up
    search=actions/edit-find
    refresh=actions/view-refresh
    save=actions/document-save
    open=actions/send-to
    add=actions/list-add
    remove=actions/list-remove
    user=status/avatar-default
    lock=status/changes-prevent
    phone=devices/phone
    mail=actions/mail-send
    location=actions/mark-location
    success=emblems/emblem-ok
    warning=status/dialog-warning
    error=status/dialog-error
    info=status/dialog-information
    calendar=mimetypes/x-office-calendar
    ads=legacy/preferences-system-notifications
    list=actions/view-list
    clock=legacy/preferences-system-time
    download=places/folder-download
    log=mimetypes/text-x-generic
    logo=@)

# palette folder = colour; the plain sets use the palettes' secondary text colour,
# the accent sets the palettes' accent.
set(_zelmar_icon_palettes "light=#57534e" "dark=#d6d3d1" "light-accent=#15803d" "dark-accent=#4ade80")

set(_zelmar_icon_out ${CMAKE_CURRENT_BINARY_DIR}/ui_kit/icons)
set(ZELMAR_ICON_QRC_ENTRIES "")
foreach(_icon IN LISTS _zelmar_icons)
    string(REPLACE "=" ";" _pair "${_icon}")
    list(GET _pair 0 _name)
    list(GET _pair 1 _source)
    if(_source STREQUAL "@")
        set(_file ${CMAKE_CURRENT_LIST_DIR}/logo_mark.svg)
    else()
        file(GLOB _file ${ZELMAR_ADWAITA_DIR}/${_source}-symbolic.svg)
        if(NOT _file)
            message(FATAL_ERROR "Icon ${_name}: ${ZELMAR_ADWAITA_DIR}/${_source}-symbolic.svg is missing")
        endif()
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_file})
    file(READ ${_file} _svg)
    foreach(_palette IN LISTS _zelmar_icon_palettes)
        string(REPLACE "=" ";" _p "${_palette}")
        list(GET _p 0 _folder)
        list(GET _p 1 _colour)
        set(_coloured "${_svg}")
        foreach(_ink "#2e3436" "#2e3434" "#474747")
            string(REPLACE "${_ink}" "${_colour}" _coloured "${_coloured}")
        endforeach()
        file(WRITE ${_zelmar_icon_out}/${_folder}/${_name}.svg.tmp "${_coloured}")
        file(COPY_FILE ${_zelmar_icon_out}/${_folder}/${_name}.svg.tmp ${_zelmar_icon_out}/${_folder}/${_name}.svg
             ONLY_IF_DIFFERENT)
        file(REMOVE ${_zelmar_icon_out}/${_folder}/${_name}.svg.tmp)
        string(APPEND ZELMAR_ICON_QRC_ENTRIES
               "        <file alias=\"ui_kit/icons/${_folder}/${_name}.svg\">${_zelmar_icon_out}/${_folder}/${_name}.svg</file>\n")
    endforeach()
endforeach()
string(APPEND ZELMAR_ICON_QRC_ENTRIES
       "        <file alias=\"ui_kit/icons/logo.svg\">${CMAKE_CURRENT_LIST_DIR}/logo.svg</file>\n")
