// Fans that turn as fast as the board's do, slowed down for the eye: at 2400 turns a minute and more a
// screen shows nothing but a flicker.

const slowedDown = 60;
const firstRpm = 1000;

export class Rotors {
    constructor() {
        /** @type {Map<string, Animation>} */
        this.animations = new Map();
    }

    clear() {
        for (const animation of this.animations.values())
            animation.cancel();
        this.animations.clear();
    }

    /** @param {string} id  @param {SVGElement} rotor  @param {number} rpm */
    turn(id, rotor, rpm) {
        if (!this.animations.has(id) && rpm > 0 && !matchMedia('(prefers-reduced-motion: reduce)').matches)
            this.animations.set(id, rotor.animate(
                [{ transform: 'rotate(0turn)' }, { transform: 'rotate(1turn)' }],
                { duration: 60000 / firstRpm * slowedDown, iterations: Infinity }));
        const animation = this.animations.get(id);
        if (!animation)
            return;
        // A rate of 0 would keep the animation running for nothing.
        if (rpm > 0) {
            animation.updatePlaybackRate(rpm / firstRpm);
            if (animation.playState === 'paused')
                animation.play();
        } else {
            animation.pause();
        }
    }
}
