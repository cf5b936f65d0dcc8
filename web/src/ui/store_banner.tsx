// What is told about the file that keeps everything, above whatever view is open.
import { useState } from "preact/hooks";
import type { Status } from "../bridge/routes";
import { useAnswer } from "../client";
import { since } from "../model/store";
import { load, save } from "../model/stored";
import { capitalize, typeset } from "../model/time";
import { Icon } from "./icons";
import { IconButton } from "./parts";
import { Said } from "./said";

/** While something is wrong; read out once, as it stays in place when the view changes. */
export function StoreBanner({ status }: { status: Status | undefined }) {
  const trouble = status?.store;
  return (
    <Said role="alert" class="store-trouble" text={trouble?.message}>
      {status && trouble && (
        <div class="banner failed">
          <Icon name="warning" />
          <p>
            {typeset(trouble.message)}{" "}
            <span class="quiet">{capitalize(since(trouble.since, status.now))}.</span>
          </p>
        </div>
      )}
    </Said>
  );
}

const key = "seenNotice";

/** What the last repair or restore did, until it was put away. */
export function StoreNotice() {
  const { answer } = useAnswer("store.status", {}, 60);
  const [seen, setSeen] = useState(() => load(key, "", (value) => typeof value === "string"));
  const notice = answer?.notice;
  return (
    <Said class="store-notice" text={notice !== seen && notice}>
      {notice && (
        <div class="banner">
          <p>{typeset(notice)}</p>
          <IconButton
            icon="close"
            label="Ne plus montrer"
            onClick={() => {
              save(key, notice);
              setSeen(notice);
              document.querySelector<HTMLElement>("main")?.focus();
            }}
          />
        </div>
      )}
    </Said>
  );
}
