// Runs inside KWin and tells Orvanta, and nobody else, which window is active. KWin 5 and 6 name
// the same things differently.
const orvanta = "@ORVANTA@";  // the program's name on the session bus
let watched = null;

function report() {
    const text = (value) => value ? value.toString() : "";
    callDBus(orvanta, "/fr/quellvane/orvanta/Focus", "fr.quellvane.orvanta.Focus", "Report",
             text(watched && watched.desktopFileName), text(watched && watched.resourceClass),
             text(watched && watched.caption), text(watched && watched.pid));
}

function activated(window) {
    if (watched) {
        try {
            watched.captionChanged.disconnect(report);
        } catch (gone) {
            // Closed windows have nothing to disconnect from.
        }
    }
    watched = window;
    if (watched) watched.captionChanged.connect(report);
    report();
}

(workspace.windowActivated || workspace.clientActivated).connect(activated);
activated(workspace.activeWindow === undefined ? workspace.activeClient : workspace.activeWindow);
