// The WebSocket: messages by type, requests with their answers, and a new attempt when it is lost.
import { readPicture } from "./message.js";

const kShortestWait = 500;
const kLongestWait = 5000;

export class Connection {
    #socket = null;
    #handlers = new Map();
    #pending = new Map();
    #requests = 0;
    #wait = kShortestWait;

    constructor() {
        this.address = new URL("socket", document.baseURI);
        this.address.protocol = this.address.protocol === "https:" ? "wss:" : "ws:";
    }

    get open() {
        return this.#socket?.readyState === WebSocket.OPEN;
    }

    // Beside the types of the protocol: "opened", "closed" with the seconds until the next attempt, "picture".
    on(type, handler) {
        this.#handlers.set(type, [...(this.#handlers.get(type) ?? []), handler]);
    }

    connect() {
        const socket = new WebSocket(this.address);
        socket.binaryType = "arraybuffer";
        socket.addEventListener("open", () => {
            this.#wait = kShortestWait;
            this.#emit("opened");
        });
        socket.addEventListener("message", (event) => this.#receive(event.data));
        socket.addEventListener("close", () => {
            const wait = this.#wait;
            this.#wait = Math.min(kLongestWait, wait * 2);
            this.#pending.forEach(({ reject }) => reject(new Error("the connection was lost before the answer came")));
            this.#pending.clear();
            this.#emit("closed", wait / 1000);
            setTimeout(() => this.connect(), wait);
        });
        this.#socket = socket;
    }

    send(type, members = {}) {
        if (this.open) this.#socket.send(JSON.stringify({ type, ...members }));
    }

    // The answer `done`, or an error with the server's sentence.
    request(type, members = {}) {
        if (!this.open) return Promise.reject(new Error("there is no connection to zelcam"));
        const request = ++this.#requests;
        return new Promise((resolve, reject) => {
            this.#pending.set(request, { resolve, reject });
            this.send(type, { request, ...members });
        });
    }

    #receive(data) {
        if (typeof data !== "string") {
            this.#emit("picture", readPicture(data));
            return;
        }
        const message = JSON.parse(data);
        if (message.type !== "done" && message.type !== "failed") {
            this.#emit(message.type, message);
            return;
        }
        const waiting = this.#pending.get(message.request);
        this.#pending.delete(message.request);
        if (message.type === "done") waiting?.resolve(message);
        else waiting?.reject(new Error(message.message));
    }

    #emit(type, message) {
        this.#handlers.get(type)?.forEach((handler) => handler(message));
    }
}
