
export default class OrvantaExtension extends Extension {
    enable() {
        this._reporter = new FocusReporter();
        this._reporter.enable();
    }

    disable() {
        this._reporter.disable();
        this._reporter = null;
    }
}
