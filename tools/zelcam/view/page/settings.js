// Writes parameters and says what became of it. Of several values for one parameter that come faster than the camera
// takes them, the last one is set.

export class Settings {
    #connection;
    #messages;
    #under = new Map();
    #listeners = [];

    constructor(connection, messages) {
        this.#connection = connection;
        this.#messages = messages;
    }

    // `listener(name, outcome)`: outcome.message, and outcome.refused when the camera did not take it.
    onOutcome(listener) {
        this.#listeners.push(listener);
    }

    async set(name, value) {
        if (this.#under.has(name)) {
            this.#under.set(name, String(value));
            return;
        }
        this.#under.set(name, null);
        const outcome = { message: "", refused: false };
        try {
            const answer = await this.#connection.request("set", { name, value: String(value) });
            outcome.message = answer.message;
            outcome.refused = answer.result?.accepted === false;
        } catch (error) {
            outcome.message = error.message;
            outcome.refused = true;
        }
        const next = this.#under.get(name);
        this.#under.delete(name);
        if (next !== null) {
            this.set(name, next);
            return;
        }
        this.#messages.say(outcome.message, outcome.refused ? "warning" : "info", `set ${name}`);
        this.#listeners.forEach((listener) => listener(name, outcome));
    }
}
