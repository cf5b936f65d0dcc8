// What people use on Linux every day.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "support/texts.h"

namespace orvanta::test {

struct EverydayApp {
  const char* name;        ///< in French
  const char* categories;  ///< its desktop file's line
  const char* expected;
};

// The names and lines are those of Debian 12's packages; at the end some from elsewhere, as their
// makers publish them. Of browsers the sites tell. The built-in "Craft" catches Minecraft.
// clang-format off
constexpr EverydayApp kEverydayApps[] = {
    {"LibreOffice Writer", "Office;WordProcessor;", "travail"},
    {"LibreOffice Calc", "Office;Spreadsheet;", "travail"},
    {"LibreOffice Impress", "Office;Presentation;", "travail"},
    {"LibreOffice Draw", "Office;FlowChart;Graphics;2DGraphics;VectorGraphics;", "travail"},
    {"LibreOffice Base", "Office;Database;", "travail"},
    {"LibreOffice Start Center", "Office;X-Red-Hat-Base;X-SuSE-Core-Office;X-MandrivaLinux-Office-Other;", "travail"},
    {"Visionneur de documents", "GNOME;GTK;Office;Viewer;Graphics;2DGraphics;VectorGraphics;", "travail"},
    {"Okular", "Qt;KDE;Graphics;Office;Viewer;", "travail"},
    {"Xournal++", "Office;GNOME;GTK;", "travail"},
    {"calibre", "Office;", "travail"},
    {"GnuCash", "Office;Finance;", "travail"},
    {"Agenda", "GNOME;GTK;Office;Calendar;Core;", "travail"},
    {"Contacts", "GNOME;GTK;Office;ContactManagement;", "autre"},
    {"Evolution", "GNOME;GTK;Office;Email;Calendar;ContactManagement;X-Red-Hat-Base;", "travail"},
    {"KMail", "Qt;KDE;Office;Network;Email;", "travail"},
    {"Messagerie Thunderbird", "Network;Email;News;GTK;", "travail"},
    {"Geary", "GNOME;GTK;Network;Email;", "travail"},
    {"Terminal", "GNOME;GTK;System;TerminalEmulator;", "travail"},
    {"Console", "System;TerminalEmulator;X-GNOME-Utilities;GTK;GNOME;", "travail"},
    {"Konsole", "Qt;KDE;System;TerminalEmulator;", "travail"},
    {"Terminal Xfce", "GTK;System;TerminalEmulator;", "travail"},
    {"Alacritty", "System;TerminalEmulator;", "travail"},
    {"kitty", "System;TerminalEmulator;", "travail"},
    {"Terminator", "GNOME;GTK;Utility;TerminalEmulator;System;", "travail"},
    {"Éditeur de texte", "GNOME;GTK;Utility;TextEditor;", "travail"},
    {"gedit", "GNOME;GTK;Utility;TextEditor;", "travail"},
    {"Mousepad", "Utility;TextEditor;GTK;", "travail"},
    {"Kate", "Qt;KDE;Utility;TextEditor;Development;", "travail"},
    {"Geany", "GTK;Development;IDE;TextEditor;", "travail"},
    {"Emacs (GUI)", "Utility;Development;TextEditor;", "travail"},
    {"Builder", "GNOME;GTK;Development;IDE;", "travail"},
    {"KDevelop", "Qt;KDE;Development;IDE;", "travail"},
    {"Qt Creator", "Development;IDE;Qt;", "travail"},
    {"Meld", "GTK;Development;", "travail"},
    {"DB Browser for SQLite", "Development;Utility;Database;", "travail"},
    {"GNU Octave", "Education;Science;Math;", "travail"},
    {"RKWard", "Qt;KDE;Science;Math;NumericalAnalysis;", "travail"},
    {"Stellarium", "Astronomy;Education;Science;", "travail"},
    {"GeoGebra", "Education;Math;", "travail"},
    {"Éditeur d’image GIMP", "Graphics;2DGraphics;RasterGraphics;GTK;", "travail"},
    {"Inkscape", "Graphics;VectorGraphics;GTK;", "travail"},
    {"Krita", "Qt;KDE;Graphics;2DGraphics;RasterGraphics;", "travail"},
    {"Blender", "Graphics;3DGraphics;", "travail"},
    {"Scribus", "Qt;Graphics;Publishing;", "travail"},
    {"FreeCAD", "Graphics;Science;Education;Engineering;", "travail"},
    {"Visionneur d’images", "GNOME;GTK;Graphics;2DGraphics;RasterGraphics;Viewer;", "travail"},
    {"Gwenview", "Qt;KDE;Graphics;Viewer;Photography;", "travail"},
    {"Shotwell", "Graphics;Photography;GNOME;GTK;", "travail"},
    {"digiKam", "Qt;Graphics;Photography;", "travail"},
    {"Darktable", "Graphics;Photography;GTK;", "travail"},
    {"Numériseur de documents", "GNOME;GTK;Graphics;Scanning;", "travail"},
    {"Kdenlive", "Qt;KDE;AudioVideo;AudioVideoEditing;", "travail"},
    {"Audacity", "AudioVideo;Audio;AudioVideoEditing;", "travail"},
    {"OBS Studio", "AudioVideo;Recorder;", "travail"},
    {"MuseScore 3", "Qt;Audio;Sequencer;Midi;AudioVideoEditing;Music;AudioVideo;", "travail"},
    {"Lecteur multimédia VLC", "AudioVideo;Player;Recorder;", "loisir"},
    {"Lecteur multimédia mpv", "AudioVideo;Audio;Video;Player;TV;", "loisir"},
    {"Vidéos", "GTK;GNOME;AudioVideo;Player;Video;", "loisir"},
    {"Celluloid", "GTK;GNOME;AudioVideo;Player;Video;TV;", "loisir"},
    {"Kodi", "AudioVideo;Video;Player;TV;", "loisir"},
    {"Rhythmbox", "GNOME;GTK;AudioVideo;Audio;Player;", "loisir"},
    {"Clementine", "AudioVideo;Player;Qt;Audio;", "loisir"},
    {"Elisa", "Qt;KDE;Audio;AudioVideo", "loisir"},
    {"Cheese", "GNOME;AudioVideo;Video;Recorder;", "loisir"},
    {"0 A.D.", "Game;StrategyGame;", "loisir"},
    {"SuperTuxKart", "Game;ArcadeGame;", "loisir"},
    {"Solitaire AisleRiot", "GNOME;GTK;Game;CardGame;", "loisir"},
    {"2048", "GNOME;GTK;Game;", "loisir"},
    {"GCompris", "Education;Game;KidsGame;", "loisir"},
    {"Fichiers", "GNOME;GTK;Utility;Core;FileManager;", "autre"},
    {"Dolphin", "Qt;KDE;System;FileTools;FileManager;", "autre"},
    {"Gestionnaire de fichiers Thunar", "System;Core;GTK;FileTools;FileManager;", "autre"},
    {"Calculatrice", "GNOME;GTK;Utility;Calculator;", "autre"},
    {"KCalc", "Qt;KDE;Utility;Calculator;X-KDE-Utilities-Desktop;", "autre"},
    {"Horloges", "GNOME;GTK;Utility;Clock;", "autre"},
    {"Météo", "GNOME;GTK;Utility;Core;", "autre"},
    {"Gestionnaire d’archives", "GTK;GNOME;Utility;Archiving;Compression;X-GNOME-Utilities;", "autre"},
    {"KeePassXC", "Utility;Security;Qt;", "autre"},
    {"Paramètres", "GNOME;GTK;Settings;", "autre"},
    {"Configuration du système", "Qt;KDE;Settings;", "autre"},
    {"Logiciels", "GNOME;GTK;System;PackageManager;", "autre"},
    {"Gestionnaire de paquets Synaptic", "PackageManager;GTK;System;Settings;", "autre"},
    {"Disques", "GNOME;GTK;Utility;X-GNOME-Utilities;", "autre"},
    {"GParted", "GNOME;System;Filesystem;", "autre"},
    {"Moniteur système", "GNOME;GTK;System;Monitor;", "autre"},
    {"Gestionnaire de machines virtuelles", "System;", "autre"},
    {"Machines", "GNOME;GTK;System;Development;Emulator;", "travail"},
    {"Pidgin", "GTK;Network;InstantMessaging;", "autre"},
    {"HexChat", "GTK;Network;IRCClient;", "autre"},
    {"Telegram Desktop", "Chat;Network;InstantMessaging;Qt;", "autre"},
    {"Remmina", "GTK;GNOME;X-GNOME-NetworkSettings;Network;", "travail"},
    {"Transmission", "Network;FileTransfer;P2P;GTK;", "autre"},
    {"Liferea", "Network;News;", "loisir"},
    {"Zoom Workplace", "Network;Application;", "travail"},
    {"VSCodium", "Utility;TextEditor;Development;IDE;", "travail"},
    {"Signal", "Network;InstantMessaging;Chat;", "autre"},
    {"Slack", "GNOME;GTK;Network;InstantMessaging;", "travail"},
    {"Spotify", "Audio;Music;Player;AudioVideo;", "loisir"},
    {"Minecraft Launcher", "Game;", "travail"},
    {"Firefox ESR", "Network;WebBrowser;", "nonclasse"},
    {"Navigateur Web Chromium", "Network;WebBrowser;", "nonclasse"},
};
// clang-format on

/// The line as a list.
inline Texts listed(std::string_view line) {
  Texts list;
  for (auto rest = std::string(line); !rest.empty();) {
    const auto end = std::min(rest.find(';'), rest.size());
    if (end > 0) list.push_back(rest.substr(0, end));
    rest.erase(0, end + 1);
  }
  return list;
}

}  // namespace orvanta::test
